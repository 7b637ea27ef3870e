// zamgen-tune-avx2: times every AVX2 variant of every codelet (the bodies
// the vector printer chooses among by its estimate, written by
// `zamgen-codegen --variants`) and writes the table of those that run
// faster than the estimate's choice, codegen/avx2_choices.tsv.
// zamgen-tune-avx512 (this file with ZAM_TUNE_AVX512): the same for the
// AVX-512 variants of every codelet (`zamgen-codegen --avx512-variants`)
// against its AVX2 body as the library has it; the table,
// codegen/avx512_choices.tsv, lists the codelets whose AVX-512 body runs
// faster.
//
//   zamgen-tune-avx2 TABLE [PART...]
//   zamgen-tune-avx512 TABLE [PART...]
//
// With PARTs, only the codelets whose names contain one of them are timed,
// and their rows of TABLE replaced; the other rows stay.
//
// All variants give the scalar body's bits (checked here on one input per
// scaling flag; the tests check the chosen bodies fully).  Each codelet's
// variants are timed in turns, twice over; a variant is taken where it runs
// at most kGain of the current body's time in both rounds, and where its
// machine code takes at most kMaxCode bytes (read with nm, from binutils).
#include "frame/pick.hpp"

#include "variants.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

// The path measured, the program's name, and for the table's head the
// bodies, the compiler's list of their keys and what an unlisted codelet runs.
struct Tuned {
    zam::Path path;
    const char *name, *bodies, *keys, *unlisted;
};
#if ZAM_TUNE_AVX512
constexpr Tuned kTuned{zam::Path::Avx512, "zamgen-tune-avx512", "AVX-512", "avx512_variants",
                       "runs its AVX2 body on processors with AVX-512 too"};
#else
constexpr Tuned kTuned{zam::Path::Avx2, "zamgen-tune-avx2", "AVX2", "avx2_variants", "takes the body the estimate chooses"};
#endif

namespace {

using Body = ZamStatus (*)(const void*, void*, uint32_t);

struct Variant {
    const char* name;
    const char* qualified;  // with the namespace, as nm -C prints it
    Body body, scalar;
    const char* key;
    bool current;  // the body the library runs now: the estimate's AVX2 choice, or for AVX-512 the AVX2 body
};

// Every body is called through one function type: `call<f>` passes the
// buffers on as f's element types (and the Walsh-Hadamard codelets a work
// buffer, which they take).
alignas(64) uint8_t work[4096];

template <class E, class D>
ZamStatus pass(ZamStatus (*f)(const E*, D*, uint32_t), const void* src, void* dst, uint32_t flag) {
    return f(static_cast<const E*>(src), static_cast<D*>(dst), flag);
}
template <class E, class D>
ZamStatus pass(ZamStatus (*f)(const E*, D*, uint32_t, uint8_t*), const void* src, void* dst, uint32_t flag) {
    return f(static_cast<const E*>(src), static_cast<D*>(dst), flag, work);
}
template <auto f> ZamStatus call(const void* src, void* dst, uint32_t flag) { return pass(f, src, dst, flag); }

#define ZAM_VARIANT(name, ns, key, current) {#name, #ns "::" #name, &call<&ns::name>, &call<&zam::scalar::name>, key, current},
const Variant kVariants[] = {
#include "variants.inc"
};
#undef ZAM_VARIANT

constexpr double kGain = 0.96;
constexpr int kTurns = 5;

// A body that nearly fills the 32 KB level-1 instruction cache runs at a
// speed that depends on where the linker puts it: the complex DFT of 59
// floats scheduled for register pressure (31 KB) took 304 ns at one address
// and 420 to 680 ns at others, so the tuner's time did not hold in the
// library.  Such bodies are not taken.
constexpr unsigned long long kMaxCode = 28 * 1024;

// The size of each function's machine code in this program, by its name
// with namespaces and without parameters.
std::map<std::string, unsigned long long> code_sizes() {
    std::map<std::string, unsigned long long> sizes;
    // /proc/self would name nm itself.
    const std::string command = "nm -S -C --defined-only /proc/" + std::to_string(getpid()) + "/exe";
    FILE* nm = popen(command.c_str(), "r");
    if (!nm) return sizes;
    char line[4096];
    while (std::fgets(line, sizeof line, nm)) {
        unsigned long long address = 0, size = 0;
        char type = 0;
        int used = 0;
        if (std::sscanf(line, "%llx %llx %c %n", &address, &size, &type, &used) == 3 && used > 0) {
            std::string name(line + used);
            sizes[name.substr(0, name.find_first_of("(\n"))] = size;
        }
    }
    pclose(nm);
    return sizes;
}

// Room for the largest codelet's input and output (64 complex doubles).
alignas(64) double input[1024], output[1024], expected[1024];

double nanoseconds(Body f, int calls) {
    const auto t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        f(input, output, ZAM_NODIV_BY_ANY);
        asm volatile("" ::: "memory");
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - t0).count() / calls;
}

// The least time of each variant over kTurns turns.
std::vector<double> round_of(const std::vector<const Variant*>& v, int calls) {
    std::vector<double> best(v.size(), 1e30);
    for (int t = 0; t < kTurns; ++t)
        for (size_t k = 0; k < v.size(); ++k) best[k] = std::min(best[k], nanoseconds(v[k]->body, calls));
    return best;
}

bool same_bits(const std::vector<const Variant*>& v) {
    for (uint32_t flag : {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN, ZAM_NODIV_BY_ANY}) {
        std::memset(expected, 0, sizeof expected);
        v[0]->scalar(input, expected, flag);
        for (const Variant* x : v) {
            std::memset(output, 0, sizeof output);
            x->body(input, output, flag);
            if (std::memcmp(output, expected, sizeof output) != 0) {
                std::fprintf(stderr, "%s: variant %s gives other bits\n", x->name, x->key);
                return false;
            }
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s TABLE [PART...]\n", kTuned.name);
        return 2;
    }
    const std::vector<std::string> parts(argv + 2, argv + argc);
    auto chosen = [&](const std::string& name) {
        return parts.empty() || std::any_of(parts.begin(), parts.end(), [&](const std::string& p) {
                   return name.find(p) != std::string::npos;
               });
    };
    if (!zam::path_supported(kTuned.path)) {
        std::fprintf(stderr, "%s: this processor lacks the path's instructions\n", kTuned.name);
        return 1;
    }
    const std::map<std::string, unsigned long long> sizes = code_sizes();
    if (sizes.empty()) {
        std::fprintf(stderr, "%s: no code sizes (nm from binutils is needed)\n", kTuned.name);
        return 1;
    }
    auto too_large = [&](const Variant* v) {
        const auto it = sizes.find(v->qualified);
        return it != sizes.end() && it->second > kMaxCode;
    };
    std::map<std::string, std::vector<const Variant*>> codelets;
    for (const Variant& v : kVariants)
        if (chosen(v.name)) codelets[v.name].push_back(&v);
    // The table's rows by codelet: those of the codelets not timed kept as they are.
    std::map<std::string, std::string> rows;
    if (!parts.empty()) {
        std::ifstream in(argv[1]);
        for (std::string row; std::getline(in, row);)
            if (const std::string name = row.substr(0, row.find('\t')); !row.empty() && row[0] != '#' && !chosen(name))
                rows[name] = row;
    }
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
    int taken = 0, failed = 0;
    for (const auto& [name, v] : codelets) {
        // Random data in the codelet's precision.
        if (name.find("_32f") != std::string::npos)
            for (size_t i = 0; i < 2 * std::size(input); ++i) reinterpret_cast<float*>(input)[i] = uniform(random);
        else
            for (double& x : input) x = uniform(random);
        if (!same_bits(v)) {
            ++failed;
            continue;
        }
        const size_t current = std::find_if(v.begin(), v.end(), [](const Variant* x) { return x->current; }) - v.begin();
        if (current == v.size()) {
            std::fprintf(stderr, "%s: the current body is not among the variants\n", name.c_str());
            ++failed;
            continue;
        }
        if (v.size() < 2) continue;  // nothing else to measure
        const int calls = std::max(20, static_cast<int>(2e5 / std::max(1.0, nanoseconds(v[current]->body, 200))));
        const std::vector<double> a = round_of(v, calls), b = round_of(v, calls);
        // The fastest of the others, taken only where it is faster by kGain in both rounds.
        size_t best = v.size();
        for (size_t k = 0; k < v.size(); ++k)
            if (k != current && !too_large(v[k]) && (best == v.size() || a[k] + b[k] < a[best] + b[best])) best = k;
        if (best == v.size()) continue;  // none small enough
        const bool take = a[best] <= kGain * a[current] && b[best] <= kGain * b[current];
        std::printf("%s\t%zu variants\tnow %.1f ns\tbest %s %.1f ns\t%.3f%s\n", name.c_str(), v.size(),
                    std::min(a[current], b[current]), v[best]->key, std::min(a[best], b[best]),
                    (a[best] + b[best]) / (a[current] + b[current]), take ? "\ttaken" : "");
        if (take) rows[name] = name + '\t' + v[best]->key, ++taken;
    }
    if (failed) {
        std::fprintf(stderr, "%s: %d codelets failed; %s left as it was\n", kTuned.name, failed, argv[1]);
        return 1;
    }
    std::ofstream out(argv[1], std::ios::trunc);
    out << "# " << kTuned.bodies << " bodies chosen by measurement: codelet, variant key (see zg::" << kTuned.keys
        << ").\n# Written by " << kTuned.name << "; a codelet not listed " << kTuned.unlisted << ".\n";
    for (const auto& [name, row] : rows) out << row << '\n';
    std::fprintf(stderr, "%s: %d of %zu codelets take another body\n", kTuned.name, taken, codelets.size());
    return out ? 0 : 1;
}
