// The codelet compiler itself: its constants, its literals and its recipes
// evaluated on the graph.  Simplification, the precision model and emission
// are pinned by the checksum and operation-count baselines.
#include "lower.hpp"
#include "print_cpp.hpp"
#include "print_simd.hpp"
#include "recipes/families.hpp"
#include "recipes/transforms.hpp"
#include "surface.hpp"
#include "dct4/table_slot.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <map>
#include <random>

namespace {

using namespace zg;

TEST(CodegenConstants, AreCorrectlyRoundedCosinesAndSines) {
    struct Row {
        long k, n;
        double c, s;
    };
    // Correctly rounded values computed independently with 40-digit arithmetic.
    const Row rows[] = {
        {1, 5, 0x1.3c6ef372fe950p-2, 0x1.e6f0e134454ffp-1},
        {1, 3, -0x1.0000000000000p-1, 0x1.bb67ae8584caap-1},
        {1, 8, 0x1.6a09e667f3bcdp-1, 0x1.6a09e667f3bcdp-1},
        {1, 7, 0x1.3f3a0e28bedd1p-1, 0x1.904c37505de4bp-1},
        {5, 47, 0x1.91d1399b62b08p-1, 0x1.3d4fdb8191592p-1},
        {3, 64, 0x1.e9f4156c62ddap-1, 0x1.294062ed59f06p-2},
        {11, 23, -0x1.fb3b3035aa6cdp-1, 0x1.16de8a4564f0ap-3},
        {2, 5, -0x1.9e3779b97f4a8p-1, 0x1.2cf2304755a5ep-1},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(cos2pi(r.k, r.n).to_double(), r.c) << r.k << "/" << r.n;
        EXPECT_EQ(sin2pi(r.k, r.n).to_double(), r.s) << r.k << "/" << r.n;
    }
}

TEST(CodegenConstants, AgreeWithLongDoubleEverywhereAndKeepSymmetries) {
    const long double pi = 3.141592653589793238462643383279502884L;
    for (long n = 1; n <= 256; ++n) {
        for (long k = -n; k <= 2 * n; ++k) {
            const long double a = 2 * pi * static_cast<long double>(k) / static_cast<long double>(n);
            const double c = cos2pi(k, n).to_double(), s = sin2pi(k, n).to_double();
            EXPECT_LE(std::fabs(c - std::cos(a)), 0.5L * std::ldexp(1.0L, -52) + 1e-18L) << k << "/" << n;
            EXPECT_LE(std::fabs(s - std::sin(a)), 0.5L * std::ldexp(1.0L, -52) + 1e-18L) << k << "/" << n;
            // Exact symmetries: equal magnitudes for mirrored angles.
            EXPECT_EQ(c, cos2pi(-k, n).to_double());
            EXPECT_EQ(s, -sin2pi(-k, n).to_double());
        }
    }
}

TEST(CodegenLiterals, ReadBackExactly) {
    std::mt19937_64 gen(42);
    std::uniform_real_distribution<double> d(-4.0, 4.0);
    for (int i = 0; i < 20000; ++i) {
        const double v = std::ldexp(d(gen), static_cast<int>(gen() % 40) - 20);
        const float f = static_cast<float>(v);
        const std::string lf = float_literal(f);
        EXPECT_EQ(std::strtod(double_literal(v).c_str(), nullptr), v);
        EXPECT_TRUE(lf.back() == 'f' && std::strtof(lf.c_str(), nullptr) == f) << lf;
    }
    EXPECT_EQ(double_literal(0.7071067811865476), "0.7071067811865476");
    EXPECT_EQ(double_literal(2.0), "2.0");
    EXPECT_EQ(float_literal(0.70710677f), "0.70710677f");
}

// The planner: within the budget beats outside it; inside, the lowest weighted
// cost, the first of equal ones; outside, the fewest additions; a keyed choice
// is made once.
TEST(CodegenPlanner, ChoosesWithinBudgetThenCheapestThenFirst) {
    struct Row {
        std::vector<OpCounts> cands;
        Objective objective;
        size_t want;
    };
    const Budget budget{10, 20};
    const Row rows[] = {
        {{{5, 30, 0}, {9, 19, 0}, {3, 10, 0}}, {1, 1, &budget}, 2},
        {{{5, 30, 0}, {12, 25, 0}}, {1, 1, &budget}, 1},           // neither fits: fewer additions
        {{{4, 6, 0}, {6, 4, 0}}, {1, 1, nullptr}, 0},             // a tie: the first
        {{{4, 6, 0}, {6, 4, 0}}, {1000, 1, nullptr}, 1},          // additions weigh more
        {{{4, 6, 0}, {6, 4, 0}}, {1, 1000, nullptr}, 0},
    };
    for (const Row& r : rows) {
        Planner p;
        EXPECT_EQ(p.choose("", r.cands.size(), [&](size_t i) { return r.cands[i]; }, r.objective).index, r.want);
    }
    Planner p;
    int measured = 0;
    for (int twice = 0; twice < 2; ++twice)
        p.choose("key", 3, [&](size_t i) { return ++measured, OpCounts{static_cast<int>(i), 0, 0}; }, {});
    EXPECT_EQ(measured, 3);
}

// Lowering, for every generated codelet of a few lengths and both precisions:
// loads first and stores last, every operand defined before it is read, last
// uses right, and the precision model (single precision widens products and
// their combinations and rounds them once; double has no rounding steps).
TEST(CodegenLower, KeepsTheInstructionListWellFormed) {
    Planner planner;
    for (const Family& f : families()) {
        for (int n : {f.first, 7, 13}) {
            if (n > f.generated_last) continue;
            const CodeletGraph c = build_codelet(planner, f, n);
            for (Precision p : {Precision::Single, Precision::Double}) {
                const Program prog = lower(c, {codelet_name(f, n, p), element_type(f, p), f.complex_elements, f.rule,
                                               length_of(f, n)}, p);
                std::map<int32_t, size_t> defined;  // value -> instruction
                bool loading = true, storing = false;
                for (size_t k = 0; k < prog.code.size(); ++k) {
                    const Instr& in = prog.code[k];
                    SCOPED_TRACE(prog.sig.function + " instruction " + std::to_string(k));
                    loading = loading && in.op == Opcode::Load;
                    EXPECT_TRUE(in.op != Opcode::Load || loading);
                    storing = storing || in.op == Opcode::Store;
                    EXPECT_TRUE(in.op == Opcode::Store || !storing);
                    for (const Operand& o : {in.a, in.b})
                        if (o.value) {
                            ASSERT_TRUE(defined.count(o.value));
                            EXPECT_GE(prog.code[defined[o.value]].last_use, static_cast<int32_t>(k));
                        }
                    if (in.op == Opcode::Store) continue;
                    defined[in.result] = k;
                    if (p == Precision::Double) {
                        EXPECT_EQ(in.type, Type::F64);
                        EXPECT_NE(in.op, Opcode::Round);
                    }
                    if (in.op == Opcode::Round) {
                        EXPECT_EQ(prog.code[defined[in.a.value]].type, Type::F64);
                    }
                    if (in.op == Opcode::MulConst && in.constant != 2.0) {
                        EXPECT_EQ(in.type, Type::F64);
                    }
                }
                EXPECT_TRUE(storing);
            }
        }
    }
}

// The AVX2 bodies of the power-of-two complex transforms run in quads of
// doubles; in single precision the float data run in quads (from 16 points
// in octets, 256-bit float vectors) and the products in quads widened from
// floats and narrowed once per rounding.  The SSE2 bodies use no AVX, the
// AVX2 bodies no AVX-512, and neither a fused multiply-add; both read all
// their input before they write.  That the lanes give the scalar bits is
// CodeletPaths' part.
TEST(CodegenSimd, PowersOfTwoRunInQuadsOnAvx2) {
    Planner planner;
    const Family& f = families().front();
    ASSERT_TRUE(f.complex_elements);
    for (int n : {8, 16, 32, 64}) {
        const CodeletGraph c = build_codelet(planner, f, n);
        for (Precision p : {Precision::Single, Precision::Double}) {
            const Program prog =
                lower(c, {codelet_name(f, n, p), element_type(f, p), f.complex_elements, f.rule, length_of(f, n)}, p);
            const std::string pairs = print_simd(prog, "ns"), quads = print_avx2(prog, "ns");
            SCOPED_TRACE(prog.sig.function);
            EXPECT_EQ(pairs.find("_mm256"), std::string::npos);
            EXPECT_NE(quads.find(p == Precision::Double ? "_mm256_add_pd(" : n > 8 ? "_mm256_add_ps(" : "_mm_add_ps("),
                      std::string::npos);
            if (p == Precision::Single && n > 8) {
                EXPECT_NE(quads.find("_mm256_cvtpd_ps("), std::string::npos);
            }
            EXPECT_EQ(quads.find("_mm512"), std::string::npos);
            for (const std::string* text : {&pairs, &quads}) {
                EXPECT_EQ(text->find("_fm"), std::string::npos);
                // All loads before the first store (the codelet may run in
                // place), and the stores among the arithmetic, not behind it.
                const size_t first_store = text->find("out + ");
                EXPECT_LT(text->rfind("in + "), first_store);
                EXPECT_LT(first_store, text->rfind("_add_"));
            }
        }
    }
}

// The real-data recipes mark their row and column transforms as batches, so
// the AVX2 bodies of lengths built from them (54 = 2 x 27, 63 = 7 x 9, the
// rows real transforms of odd length) run across the copies: at most a third
// of the arithmetic stays scalar (all but a few per cent without the marks).
TEST(CodegenSimd, RealBatchesRunInVectors) {
    Planner planner;
    for (const Family& f : families()) {
        if (f.transform != Transform::RealForward && f.transform != Transform::Hartley) continue;
        for (int n : {54, 63}) {
            const CodeletGraph c = build_codelet(planner, f, n);
            for (Precision p : {Precision::Single, Precision::Double}) {
                const Program prog =
                    lower(c, {codelet_name(f, n, p), element_type(f, p), f.complex_elements, f.rule, length_of(f, n)}, p);
                const std::string text = print_avx2(prog, "ns");
                auto count = [&](const std::string& what) {
                    size_t k = 0;
                    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++k;
                    return k;
                };
                size_t vector = 0;
                for (const char* op : {"_add_p", "_sub_p", "_mul_p", "_addsub_p"}) vector += count(op);
                const size_t scalar = count(" + ") + count(" - ") + count(" * ");
                EXPECT_LE(3 * scalar, vector + scalar) << prog.sig.function << ": " << scalar << " scalar, " << vector
                                                        << " vector";
            }
        }
    }
}

// The body the estimate chooses is one of the AVX2 variants that
// zamgen-tune-avx2 measures, so a measured choice can always fall back on
// it; a key that names no variant is refused.
TEST(CodegenSimd, TheEstimatesAvx2BodyIsAVariant) {
    Planner planner;
    for (const Family& f : families())
        for (int n : {8, 13, 54}) {
            if (f.transform == Transform::Wht || n > f.generated_last) continue;
            const CodeletGraph c = build_codelet(planner, f, n);
            for (Precision p : {Precision::Single, Precision::Double}) {
                const Program prog =
                    lower(c, {codelet_name(f, n, p), element_type(f, p), f.complex_elements, f.rule, length_of(f, n)}, p);
                const std::string chosen = print_avx2(prog, "ns");
                const std::vector<std::string> keys = avx2_variants(prog);
                EXPECT_TRUE(std::any_of(keys.begin(), keys.end(), [&](const std::string& k) { return print_avx2(prog, "ns", k) == chosen; }))
                    << prog.sig.function;
            }
        }
    const Program prog = lower(build_codelet(planner, families().front(), 8),
                               {"f", "double", true, zam::ScaleRule::Forward, 8}, Precision::Double);
    for (const char* bad : {"", "4,0,-1,found,1,0,1", "3,0,-1,found,0,0,1,0", "4,0,-1,lost,0,0,1,0", "4,0,-1,found,2,0,1,0",
                            "8,0,0,found,0,1,1,0", "4,0,-1,found,0,0,1,0,0", "4,0,-1,found,0,0,1,0,1,1"})
        EXPECT_THROW(print_avx2(prog, "ns", bad), std::invalid_argument) << bad;
}

// The AVX-512 bodies of the power-of-two complex transforms run in octets
// (eight double lanes, or eight float lanes in a 256-bit vector) and save
// at least a twentieth of the instructions of the AVX2 body with quads
// alone, under every variant key; the variants with the AVX2 bodies' sums
// print addsub only where an instruction exists for it (not on 512 bits).
// A key that names no variant is refused.
TEST(CodegenSimd, PowersOfTwoRunInOctetsOnAvx512) {
    Planner planner;
    const Family& f = families().front();
    for (int n : {16, 32, 64}) {
        const CodeletGraph c = build_codelet(planner, f, n);
        for (Precision p : {Precision::Single, Precision::Double}) {
            const Program prog =
                lower(c, {codelet_name(f, n, p), element_type(f, p), f.complex_elements, f.rule, length_of(f, n)}, p);
            for (const std::string& key : avx512_variants(prog)) {
                SCOPED_TRACE(prog.sig.function + " " + key);
                double gain = 0;
                const std::string octets = print_avx512(prog, "ns", key, &gain);
                EXPECT_GE(gain, 0.05);
                EXPECT_NE(octets.find(p == Precision::Double ? "_mm512_loadu_pd(" : "_mm256_loadu_ps("), std::string::npos);
                EXPECT_NE(octets.find(p == Precision::Double ? "_mm512_add_pd(" : "_mm256_add_ps("), std::string::npos);
                EXPECT_EQ(octets.find("_fm"), std::string::npos);
                EXPECT_EQ(octets.find("_mm512_addsub"), std::string::npos);
                EXPECT_EQ(octets.find("addsub") != std::string::npos, key.back() == '1');
            }
        }
    }
    const Program prog = lower(build_codelet(planner, f, 16), {"f", "double", true, zam::ScaleRule::Forward, 16},
                               Precision::Double);
    for (const char* bad : {"", "0", "2,0", "0,2", "0,0,0", "ymm32"}) EXPECT_THROW(print_avx512(prog, "ns", bad), std::invalid_argument) << bad;
}

// The copies of a prime-factor stage are the same transform on other data,
// and so are the output pairs of a long direct transform: their
// instructions line up position by position (what the vector printer seeds
// lanes from); in the prime-factor lengths every operation of the list
// belongs to a batch.
TEST(CodegenLanes, CopiesOfABatchLineUp) {
    Planner planner;
    const Family& f = families().front();
    for (int n : {15, 47, 48, 60}) {
        const CodeletGraph c = build_codelet(planner, f, n);
        const Program prog = lower(c, {codelet_name(f, n, Precision::Single), element_type(f, Precision::Single),
                                       f.complex_elements, f.rule, length_of(f, n)},
                                   Precision::Single);
        SCOPED_TRACE(prog.sig.function);
        std::map<std::array<int, 3>, const Instr*> at;  // (batch, copy, position)
        for (const Instr& in : prog.code) {
            if (in.op == Opcode::Load || in.op == Opcode::Store) continue;
            const LaneTag& t = in.lanes[0];
            if (n == 47 && t.group < 0) continue;  // the sum of all inputs
            ASSERT_GE(t.group, 0);
            at[{t.group, t.copy, t.pos}] = &in;
        }
        int compared = 0;
        for (const auto& [key, in] : at) {
            const auto next = at.find({key[0], key[1] + 1, key[2]});
            if (next == at.end()) continue;
            // A sum and a difference share a vector (a lane's sign goes into the operand).
            auto kind = [](Opcode op) { return op == Opcode::Sub ? Opcode::Add : op; };
            EXPECT_EQ(kind(next->second->op), kind(in->op));
            EXPECT_EQ(next->second->type, in->type);
            ++compared;
        }
        EXPECT_GT(compared, static_cast<int>(at.size()) / 2);
    }
}

TEST(CodegenGraph, ProductsOfTwoValuesAreSharedAndTakeBothSigns) {
    Graph g;
    const Ref a = g.input(0), b = g.input(1);
    EXPECT_EQ(g.product(a, b), g.product(b, a));
    EXPECT_EQ(g.product(-a, b), -g.product(a, b));
    EXPECT_EQ(g.product(-a, -b), g.product(a, b));
    EXPECT_TRUE(g.product(Ref{}, a).is_zero());
    EXPECT_EQ(evaluate(g, {3.0, -2.0}, {g.product(-a, b)})[0], 6.0);
}

// In the element precision nothing widens or rounds; with late loads and
// early stores each load comes right before its first use, but before the
// first store, and each store right after its value.
TEST(CodegenLower, ElementPrecisionAndPlacedLoadsAndStores) {
    CodeletGraph c;
    const Ref a = c.g.input(0), b = c.g.input(1), d = c.g.input(2);
    const Ref p = c.g.round(c.g.sub(c.g.mul(0.3, a), b));
    c.outputs.push_back({0, p, Store::Unscaled});
    c.outputs.push_back({1, c.g.product(p, d), Store::Unscaled});
    c.element_precision = c.early_stores = c.late_loads = true;
    const Signature sig{"k", "float", false, zam::ScaleRule::Symmetric, 2, Form::Dct4Direct};
    const Program single = lower(c, sig, Precision::Single);
    std::vector<Opcode> ops;
    for (const Instr& in : single.code) {
        EXPECT_EQ(in.type, Type::F32);
        ops.push_back(in.op);
    }
    using O = Opcode;
    EXPECT_EQ(ops, (std::vector<O>{O::Load, O::MulConst, O::Load, O::Sub, O::Load, O::Store, O::Mul, O::Store}));
    EXPECT_NE(print_cpp(single).find("zam::store<float>(y, 1, t"), std::string::npos);
}

} // namespace

// ---- The recipes, evaluated on the graph without compiling them ----------

namespace recipes {

using Cd = std::complex<double>;

Cd unit(double turns) { return std::polar(1.0, 2 * 3.14159265358979323846 * turns); }

std::vector<double> random_inputs(size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> d(-1.0, 1.0);
    std::vector<double> v(n);
    for (double& x : v) x = d(gen);
    return v;
}

// Real forward transforms (half spectrum) and inverse transforms, plain and
// with doubled middle bins (the form only the Rader convolutions use), for
// every length, with the pruned transform first among equally cheap forms and
// with the steps first.
TEST(CodegenRecipes, RealDftsOfEveryLength) {
    for (bool steps_first : {false, true}) {
        Planner planner(steps_first);
        for (int n = 2; n <= 64; ++n) {
            const auto in = random_inputs(static_cast<size_t>(n + 2), static_cast<unsigned>(100 + n));
            {
                Graph g;
                Context ctx{g, planner};
                std::vector<Ref> x(static_cast<size_t>(n));
                for (int i = 0; i < n; ++i) x[static_cast<size_t>(i)] = g.input(i);
                std::vector<Ref> refs;
                for (Cx v : rdft(ctx, x, -1)) {
                    refs.push_back(v.re);
                    refs.push_back(v.im);
                }
                const auto out = evaluate(g, in, refs);
                for (int k = 0; 2 * k <= n; ++k) {
                    Cd want = 0;
                    for (int j = 0; j < n; ++j) want += in[static_cast<size_t>(j)] * unit(-double((j * k) % n) / n);
                    EXPECT_NEAR(out[static_cast<size_t>(2 * k)], want.real(), 1e-12) << n << " steps first " << steps_first;
                    EXPECT_NEAR(out[static_cast<size_t>(2 * k + 1)], want.imag(), 1e-12) << n << " steps first " << steps_first;
                }
            }
            for (bool doubled : {false, true}) {
                Graph g;
                Context ctx{g, planner};
                CxVec X(static_cast<size_t>(n / 2 + 1));
                std::vector<Cd> half(X.size());
                for (int k = 0; 2 * k <= n; ++k) {
                    const bool middle = k > 0 && 2 * k != n;
                    X[static_cast<size_t>(k)] = {g.input(2 * k), middle ? g.input(2 * k + 1) : Ref{}};
                    half[static_cast<size_t>(k)] = {in[static_cast<size_t>(2 * k)], middle ? in[static_cast<size_t>(2 * k + 1)] : 0.0};
                }
                const auto out = evaluate(g, in, irdft(ctx, X, n, +1, doubled));
                for (int j = 0; j < n; ++j) {
                    double want = 0;
                    for (int k = 0; k < n; ++k) {
                        Cd v = 2 * k <= n ? half[static_cast<size_t>(k)] : std::conj(half[static_cast<size_t>(n - k)]);
                        if (doubled && k > 0 && 2 * k != n) v *= 0.5;
                        want += (v * unit(double((j * k) % n) / n)).real();
                    }
                    EXPECT_NEAR(out[static_cast<size_t>(j)], want, 1e-12) << n << (doubled ? " doubled" : "") << " steps first " << steps_first;
                }
            }
        }
    }
}

// Every DCT-IV kernel against the sums it stands for, the run-time table
// values being rotations by arbitrary angles.
TEST(CodegenRecipes, Dct4KernelsComputeTheirSums) {
    const double pi = 3.14159265358979323846;
    Planner planner;
    for (const Dct4Block& b : dct4_blocks()) {
        const CodeletGraph c = dct4_graph(planner, b);
        const int n = b.n;
        auto in = random_inputs(static_cast<size_t>(4 * n), static_cast<unsigned>(n));
        std::vector<Cd> rot(static_cast<size_t>(n));  // the run-time rotation of value p
        for (int p = 0; p < n; ++p) {
            rot[size_t(p)] = unit(in[size_t(2 * n + p)]);
            const size_t at = b.kind == Dct4Kind::Second ? size_t(2 * n) + zam::dct4::table_slot(uint32_t(n), uint32_t(p))
                                                          : size_t(2 * n + 2 * (p - 1));
            if (b.kind == Dct4Kind::Second || p > 0) {
                in[at] = rot[size_t(p)].real();
                in[at + 1] = rot[size_t(p)].imag();
            }
        }
        std::vector<Ref> refs;
        for (const Output& o : c.outputs) refs.push_back(o.v);
        const auto got = evaluate(c.g, in, refs);
        std::vector<double> want(c.outputs.size());
        for (size_t o = 0; o < c.outputs.size(); ++o) {
            const int slot = c.outputs[o].slot, h = n / 2;
            Cd v = 0;
            if (b.kind == Dct4Kind::Direct) {
                for (int j = 0; j < n; ++j) v += in[size_t(j)] * std::cos(pi / n * (j + 0.5) * (slot + 0.5));
            } else if (b.kind == Dct4Kind::First) {
                const int g = slot / 2;
                for (int k = 0; k < h; ++k) {
                    const Cd z(in[size_t(k)], -in[size_t(h + k)]);
                    v += (g % 2 ? std::conj(z) : z) * unit((k * (2.0 * g + 1)) / (2 * n));
                }
                v = slot % 2 ? v.imag() : v.real();
            } else if (b.kind == Dct4Kind::Second) {
                const int j = slot % n;
                for (int p = 0; p < n; ++p) {
                    const Cd q = Cd(in[size_t(p)], in[size_t(n + p)]) * rot[size_t(p)];
                    v += p % 2 ? std::conj(q) * unit(-j * (2.0 * p + 1) / (4 * n)) : q * unit(j * (2.0 * p + 1) / (4 * n));
                }
                v = slot < n ? v.real() : v.imag();
            } else {
                const int l = slot / 2;
                for (int i = 0; i < n; ++i) {
                    Cd a(in[size_t(i)], in[size_t(n + i)]);
                    if (b.kind == Dct4Kind::RadixOdd) a = std::conj(a);
                    v += (i > 0 ? a * rot[size_t(i)] : a) * unit(double(i * l) / n);
                }
                if (2 * l >= n) v = std::conj(v);
                v = slot % 2 ? v.imag() : v.real();
            }
            want[o] = v.real();
        }
        for (size_t o = 0; o < got.size(); ++o) EXPECT_NEAR(got[o], want[o], 1e-12) << b.name << " slot " << c.outputs[o].slot;
    }
}

} // namespace recipes
