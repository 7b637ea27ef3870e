// Every codelet's vector bodies (one per vector path this processor runs)
// give its scalar body's bits: all four scaling flags and a refused one, on
// random, huge, tiny, signed-zero, infinite and NaN inputs, out of place and
// in place, with the memory around the output compared too.
#include "support.hpp"

#include "frame/pick.hpp"
#include "simd/paths.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace {

template <class E> using Scalar = std::conditional_t<std::is_same_v<E, Zam32fc> || std::is_same_v<E, Zam32f>, float, double>;
template <class E> constexpr size_t kParts = std::is_same_v<E, Zam32fc> || std::is_same_v<E, Zam64fc> ? 2 : 1;

// Scalars read and written: the Walsh-Hadamard codelets 2^order of each, the
// others as the test support knows them.
std::pair<size_t, size_t> sizes(const std::string& name)
{
    if (name.rfind("zamgWHT_", 0) == 0) {
        const size_t n = size_t{1} << std::stoi(name.substr(8));
        return {n, n};
    }
    const zt::Case& c = zt::find_case(name);
    return {size_t(c.in), size_t(c.out)};
}

template <class E, class... Buffer>
void expect_same_bits(const char* name, ZamStatus (*scalar)(const E*, E*, uint32_t, Buffer...),
                      ZamStatus (*vector)(const E*, E*, uint32_t, Buffer...))
{
    using T = Scalar<E>;
    const auto [in, out] = sizes(name);
    const size_t room = std::max(in, out) + 4;  // whole elements and a margin past the output
    int failures = 0;
    for (const std::vector<T>& x0 : zt::path_inputs<T>(in, in * 7 + out)) {
        for (uint32_t flag : {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN, ZAM_NODIV_BY_ANY, 99u}) {
            for (bool in_place : {false, true}) {
                std::vector<T> x = x0, a(room, T(3)), b(room, T(3));
                x.resize(room, T(3));
                if (in_place) a = x, b = x;
                const E* sa = reinterpret_cast<const E*>(in_place ? a.data() : x.data());
                const E* sb = reinterpret_cast<const E*>(in_place ? b.data() : x.data());
                const ZamStatus ka = scalar(sa, reinterpret_cast<E*>(a.data()), flag, Buffer{}...);
                const ZamStatus kb = vector(sb, reinterpret_cast<E*>(b.data()), flag, Buffer{}...);
                if (ka != kb || !zt::same_results(a, b)) ++failures;
            }
        }
    }
    EXPECT_EQ(failures, 0) << name;
}

TEST(CodeletPaths, EveryVectorBodyGivesTheScalarBits)
{
#if defined(ZAMGEN_VECTOR_PATHS)
    // The AVX-512 bodies, where a codelet has one; the others run their AVX2
    // body there.
    enum class Body { Sse2, Avx2, Avx512 };
    std::vector<Body> paths{Body::Sse2};
    if (zam::path_supported(zam::Path::Avx2)) paths.push_back(Body::Avx2);
    if (zam::path_supported(zam::Path::Avx512)) paths.push_back(Body::Avx512);
#if defined(ZAMGEN_HOST_HAS_AVX512)
    EXPECT_TRUE(zam::path_supported(zam::Path::Avx512)) << "this machine has AVX-512: its bodies must be the ones run and tested";
#endif
    int bodies = 0;
    for (Body p : paths) {
#define ZAM_PATHS_0(name, E)
#define ZAM_PATHS_1(name, E)                                                                                   \
    if (p != Body::Avx512) {                                                                                   \
        expect_same_bits<E>(#name, zam::scalar::name, p == Body::Avx2 ? zam::avx2::name : zam::sse2::name);   \
        ++bodies;                                                                                              \
    }
#define ZAM_PATHS_2(name, E)                                                                                   \
    expect_same_bits<E>(#name, zam::scalar::name,                                                              \
                        p == Body::Avx512 ? zam::avx512::name : p == Body::Avx2 ? zam::avx2::name : zam::sse2::name); \
    ++bodies;
#define ZAM_PATHS(name, E, bodies) ZAM_PATHS_##bodies(name, E)
#include "codelet_paths.inc"
#undef ZAM_PATHS
#undef ZAM_PATHS_0
#undef ZAM_PATHS_1
#undef ZAM_PATHS_2
    }
    std::printf("[ paths ] %d vector bodies compared on %zu paths\n", bodies, paths.size());
    EXPECT_GT(bodies, 0);
#else
    GTEST_SKIP() << "scalar build";
#endif
}

} // namespace
