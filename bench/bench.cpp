// zamgen-bench: ns per call of the library's transforms and of FFTW's plans
// for the same transform, length and precision, in one run, on the same
// aligned buffers.  Names are <library>/<family>/<precision>/<size>, so
// ratios.py can pair them.  Built with ZAMGEN_BENCH_AVTX, the DCT-IV also
// runs against FFmpeg's MDCT (avtx/dct4/...).
//
//   zamgen-bench [--family=wht,complex,real,hartley,dct4] [Google Benchmark options]
//
// Families: wht, complex_fwd, complex_inv, real_fwd_ccs|pack|perm,
// real_inv_ccs|pack|perm, hartley, dct4; --family takes name prefixes.
#include "zamgen.h"
#include "zamgen_table.hpp"
#include "zamcore.h"

#include <benchmark/benchmark.h>
#include "fftw_api.hpp"
#if ZAMGEN_BENCH_AVTX
extern "C" {  // FFmpeg's headers declare C functions without a guard of their own
#include <libavutil/tx.h>
}
#endif

#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

// Input and output buffers of `inputs` and `outputs` values, aligned, shared
// by both libraries for one size; the input is random.
template <class T>
struct Buffers {
    Buffers(size_t inputs, size_t outputs)
        : in(static_cast<T*>(zamMalloc(static_cast<uint32_t>(inputs * sizeof(T))))),
          out(static_cast<T*>(zamMalloc(static_cast<uint32_t>(outputs * sizeof(T))))) {
        std::mt19937 gen(1);
        std::uniform_real_distribution<T> d(-1, 1);
        for (size_t i = 0; i < inputs; ++i) in[i] = d(gen);
    }
    ~Buffers() {
        zamFree(in);
        zamFree(out);
    }
    T* in;
    T* out;
};

const char* precision(bool single) { return single ? "32f" : "64f"; }

// Registers ours and FFTW's run of one transform on one pair of buffers.
// `ours` is called directly (no std::function), as FFTW's plan is executed
// directly.  `plan` makes FFTW's plan (FFTW_MEASURE overwrites the buffers,
// so the input is filled again afterwards).
template <class T, class Ours>
void pair(const std::string& family, int size, size_t scalars, Ours ours,
          std::function<typename Fftw<T>::Plan(T*, T*)> plan) {
    auto* b = new Buffers<T>(scalars, scalars);  // lives as long as the benchmarks
    std::vector<T> saved(b->in, b->in + scalars);
    const typename Fftw<T>::Plan p = plan(b->in, b->out);
    std::memcpy(b->in, saved.data(), scalars * sizeof(T));
    const std::string tail = "/" + family + "/" + precision(sizeof(T) == 4) + "/" + std::to_string(size);
    benchmark::RegisterBenchmark(("zamgen" + tail).c_str(), [b, ours](benchmark::State& st) {
        for (auto _ : st) {
            ours(b->in, b->out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark(("fftw" + tail).c_str(), [p](benchmark::State& st) {
        for (auto _ : st) {
            Fftw<T>::execute(p);
            benchmark::ClobberMemory();
        }
    });
}

// A family's codelets are called through their exported entries (the
// generated table of zamgen.hpp, indexed by length), as a caller who knows
// the length calls them: the length dispatchers add a bounds test and an
// indirect call.
template <class Family, class T>
using Codelets = zamgen::generated::codelets<Family, T>;

// The Walsh-Hadamard transform of order k is FFTW's real-to-halfcomplex
// transform of rank k with every axis of length 2 (a butterfly per axis).
template <class T>
void wht(ZamStatus (*entry)(const T*, T*, int32_t, uint32_t, uint8_t*),
         ZamStatus (*size)(int32_t, int32_t*)) {
    for (int order = 1; order <= 13; ++order) {
        int32_t bytes = 0;
        size(order, &bytes);
        auto* work = static_cast<uint8_t*>(zamMalloc(static_cast<uint32_t>(bytes) + 64));
        pair<T>("wht", order, size_t{1} << order,
                [=](T* in, T* out) { entry(in, out, order, ZAM_NODIV_BY_ANY, work); },
                [=](T* in, T* out) {
                    std::vector<int> n(static_cast<size_t>(order), 2);
                    std::vector<fftw_r2r_kind> kinds(static_cast<size_t>(order), FFTW_R2HC);
                    return Fftw<T>::r2r(order, n.data(), in, out, kinds.data(), FFTW_MEASURE);
                });
    }
}

// The complex DFT forward or inverse (FFTW's sign -1 or +1), unnormalised.
template <class Family, class T, class C>
void complex_dft(const char* family, int sign) {
    for (int n = 2; n <= 64; ++n)
        pair<T>(family, n, 2 * static_cast<size_t>(n),
                [f = Codelets<Family, C>::table[n]](T* in, T* out) {
                    f(reinterpret_cast<C*>(in), reinterpret_cast<C*>(out), ZAM_NODIV_BY_ANY);
                },
                [=](T* in, T* out) {
                    using X = typename Fftw<T>::Complex;
                    return Fftw<T>::dft_1d(n, reinterpret_cast<X*>(in), reinterpret_cast<X*>(out), sign, FFTW_MEASURE);
                });
}

// The real DFT forward into one of the three packed layouts, or back from it.
// FFTW's peer is its real-to-complex (or complex-to-real) plan for every
// layout: the same transform, with the spectrum in FFTW's own layout.  Its
// complex-to-real plans may use their input as scratch (its fastest plans at
// 23 of these lengths do), so ours runs first, on the untouched input.
template <class Family, class T>
void real_dft(const char* family, bool forward) {
    for (int n = 2; n <= 64; ++n)
        pair<T>(family, n, static_cast<size_t>(n) + 2,
                [f = Codelets<Family, T>::table[n]](T* in, T* out) { f(in, out, ZAM_NODIV_BY_ANY); },
                [=](T* in, T* out) {
                    using X = typename Fftw<T>::Complex;
                    return forward ? Fftw<T>::r2c_1d(n, in, reinterpret_cast<X*>(out), FFTW_MEASURE)
                                   : Fftw<T>::c2r_1d(n, reinterpret_cast<X*>(in), out, FFTW_MEASURE);
                });
}

template <class T>
void hartley() {
    for (int n = 2; n <= 64; ++n)
        pair<T>("hartley", n, static_cast<size_t>(n),
                [f = Codelets<zamgen::generated::Hartley, T>::table[n]](T* in, T* out) { f(in, out, ZAM_NODIV_BY_ANY); },
                [=](T* in, T* out) { return Fftw<T>::r2r_1d(n, in, out, FFTW_DHT, FFTW_MEASURE); });
}

#if ZAMGEN_BENCH_AVTX
// FFmpeg's forward MDCT of frame size n: n outputs from 2n inputs, a DCT-IV of
// n after folding the 2n inputs to n, on buffers of its own.
template <class T>
void avtx_mdct(int n) {
    AVTXContext* ctx = nullptr;  // lives as long as the benchmarks
    av_tx_fn fn = nullptr;
    const T scale = 1;
    const AVTXType type = sizeof(T) == 4 ? AV_TX_FLOAT_MDCT : AV_TX_DOUBLE_MDCT;
    if (av_tx_init(&ctx, &fn, type, 0, n, &scale, 0) < 0) {
        std::fprintf(stderr, "zamgen-bench: av_tx_init refused an MDCT of %d (%s)\n", n, precision(sizeof(T) == 4));
        return;
    }
    auto* b = new Buffers<T>(2 * static_cast<size_t>(n), static_cast<size_t>(n));
    benchmark::RegisterBenchmark(("avtx/dct4/" + std::string(precision(sizeof(T) == 4)) + "/" + std::to_string(n)).c_str(),
                                 [b, ctx, fn](benchmark::State& st) {
                                     for (auto _ : st) {
                                         fn(ctx, b->out, b->in, sizeof(T));
                                         benchmark::ClobberMemory();
                                     }
                                 });
}
#endif

// The DCT-IV of every power of two to 16384 on a specification made once;
// FFTW's REDFT11 is twice our unnormalised transform, the same work.  FFmpeg's
// MDCT of the same n, where built, runs right after the two.
template <class T, class S>
void dct4(ZamStatus (*init_alloc)(S**, int32_t), ZamStatus (*run)(const T*, T*, const S*)) {
    for (int n = 2; n <= 16384; n *= 2) {
        S* spec = nullptr;  // lives as long as the benchmarks
        init_alloc(&spec, n);
        pair<T>("dct4", n, static_cast<size_t>(n), [=](T* in, T* out) { run(in, out, spec); },
                [=](T* in, T* out) { return Fftw<T>::r2r_1d(n, in, out, FFTW_REDFT11, FFTW_MEASURE); });
#if ZAMGEN_BENCH_AVTX
        avtx_mdct<T>(n);
#endif
    }
}

} // namespace

int main(int argc, char** argv) {
    std::string families = "wht,complex,real,hartley,dct4";
    std::vector<char*> rest;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], "--family=", 9) == 0) families = argv[i] + 9;
        else rest.push_back(argv[i]);
    }
    // A family is wanted when its name starts with one of the names given:
    // "real" runs all six real families, "complex" both directions.
    auto wanted = [&](const std::string& f) {
        for (size_t at = 0; at <= families.size();) {
            size_t end = families.find(',', at);
            if (end == std::string::npos) end = families.size();
            if (end > at && f.compare(0, end - at, families, at, end - at) == 0) return true;
            at = end + 1;
        }
        return false;
    };
    if (wanted("wht")) {
        wht<float>(zamgWHT_32f, zamgWHTGetBufferSize_32f);
        wht<double>(zamgWHT_64f, zamgWHTGetBufferSize_64f);
    }
    namespace g = zamgen::generated;
    if (wanted("complex_fwd")) {
        complex_dft<g::DFTFwd_CToC, float, Zam32fc>("complex_fwd", FFTW_FORWARD);
        complex_dft<g::DFTFwd_CToC, double, Zam64fc>("complex_fwd", FFTW_FORWARD);
    }
    if (wanted("complex_inv")) {
        complex_dft<g::DFTInv_CToC, float, Zam32fc>("complex_inv", FFTW_BACKWARD);
        complex_dft<g::DFTInv_CToC, double, Zam64fc>("complex_inv", FFTW_BACKWARD);
    }
    auto real = [&]<class Family>(const char* family, bool forward) {
        if (!wanted(family)) return;
        real_dft<Family, float>(family, forward);
        real_dft<Family, double>(family, forward);
    };
    real.operator()<g::DFTFwd_RToCCS>("real_fwd_ccs", true);
    real.operator()<g::DFTFwd_RToPack>("real_fwd_pack", true);
    real.operator()<g::DFTFwd_RToPerm>("real_fwd_perm", true);
    real.operator()<g::DFTInv_CCSToR>("real_inv_ccs", false);
    real.operator()<g::DFTInv_PackToR>("real_inv_pack", false);
    real.operator()<g::DFTInv_PermToR>("real_inv_perm", false);
    if (wanted("hartley")) {
        hartley<float>();
        hartley<double>();
    }
    if (wanted("dct4")) {
        dct4<float>(zamgDCT4InitAlloc_32f, zamgDCT4_32f);
        dct4<double>(zamgDCT4InitAlloc_64f, zamgDCT4_64f);
    }
    int count = static_cast<int>(rest.size());
    benchmark::Initialize(&count, rest.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
