// The DCT-IV kernels and the pass drivers.  Every kernel computes in its
// element type only (single-precision literals and arithmetic in _32f, double
// in _64f), reads all its inputs before it writes, and calls nothing.
//
// y[k] = sum_n x[n] cos(pi/N (n + 1/2)(k + 1/2)) for the direct kernels; the
// passes compute the pieces of the two-pass scheme described in plan.hpp.
#pragma once

#include "dct4/plan.hpp"

#include <cstdint>

namespace zam::dct4 {

// Literal constants of the element type.
template <class T> struct K;
template <> struct K<float> {
    static constexpr float h = 0.70710677f;          // sqrt(1/2)
    static constexpr float c8 = 0.9238795f, s8 = 0.38268343f;      // cos, sin pi/8
    static constexpr float t7 = 0.8206788f, t5 = 0.53451115f;      // tan 7pi/32, tan 5pi/32
    static constexpr float s7_16 = 0.98078525f, s5_16 = 0.8314696f; // sin 7pi/16, sin 5pi/16
    static constexpr float c1 = 0.9951847f, s1 = 0.09801714f;      // cos, sin pi/32
    static constexpr float c3 = 0.95694035f, s3 = 0.29028466f;     // 3pi/32
    static constexpr float c7 = 0.77301043f, s7 = 0.6343933f;      // 7pi/32
};
template <> struct K<double> {
    static constexpr double h = 0.7071067811865476;
    static constexpr double c8 = 0.9238795325112867, s8 = 0.3826834323650898;
    static constexpr double t7 = 0.8206787908286604, t5 = 0.5345111359507917;
    static constexpr double s7_16 = 0.9807852804032304, s5_16 = 0.8314696123025452;
    static constexpr double c1 = 0.9951847266721969, s1 = 0.0980171403295606;
    static constexpr double c3 = 0.9569403357322088, s3 = 0.2902846772544624;
    static constexpr double c7 = 0.773010453362737, s7 = 0.6343932841636455;
};

// cos(k pi/128), k = 0..64, correctly rounded to the element type: the
// rotation literals of the reference kernels.
template <class T> struct Cos128;
template <> struct Cos128<float> {
    static constexpr float v[65] = {
        1.0f, 0.9996988f, 0.99879545f, 0.99729043f, 0.9951847f, 0.99247956f, 0.9891765f, 0.98527765f,
        0.98078525f, 0.9757021f, 0.97003126f, 0.96377605f, 0.95694035f, 0.94952816f, 0.94154406f, 0.9329928f,
        0.9238795f, 0.9142098f, 0.9039893f, 0.8932243f, 0.8819213f, 0.87008697f, 0.8577286f, 0.8448536f,
        0.8314696f, 0.8175848f, 0.8032075f, 0.7883464f, 0.77301043f, 0.7572088f, 0.7409511f, 0.7242471f,
        0.70710677f, 0.68954057f, 0.671559f, 0.65317285f, 0.6343933f, 0.6152316f, 0.5956993f, 0.57580817f,
        0.55557024f, 0.53499764f, 0.51410276f, 0.4928982f, 0.47139674f, 0.44961134f, 0.42755508f, 0.4052413f,
        0.38268343f, 0.35989505f, 0.33688986f, 0.31368175f, 0.29028466f, 0.26671275f, 0.24298018f, 0.21910124f,
        0.19509032f, 0.17096189f, 0.14673047f, 0.12241068f, 0.09801714f, 0.07356457f, 0.049067676f, 0.024541229f,
        0.0f,
    };
};
template <> struct Cos128<double> {
    static constexpr double v[65] = {
        1.0, 0.9996988186962042, 0.9987954562051724, 0.9972904566786902,
        0.9951847266721969, 0.99247953459871, 0.989176509964781, 0.9852776423889412,
        0.9807852804032304, 0.9757021300385286, 0.970031253194544, 0.9637760657954398,
        0.9569403357322088, 0.9495281805930367, 0.9415440651830208, 0.9329927988347388,
        0.9238795325112867, 0.9142097557035307, 0.9039892931234433, 0.8932243011955153,
        0.881921264348355, 0.8700869911087115, 0.8577286100002721, 0.8448535652497071,
        0.8314696123025452, 0.8175848131515837, 0.8032075314806449, 0.7883464276266062,
        0.773010453362737, 0.7572088465064846, 0.7409511253549591, 0.7242470829514669,
        0.7071067811865476, 0.6895405447370669, 0.6715589548470184, 0.6531728429537768,
        0.6343932841636455, 0.6152315905806268, 0.5956993044924334, 0.5758081914178453,
        0.5555702330196022, 0.5349976198870973, 0.5141027441932218, 0.49289819222978404,
        0.47139673682599764, 0.4496113296546066, 0.4275550934302821, 0.40524131400498986,
        0.3826834323650898, 0.35989503653498817, 0.33688985339222005, 0.31368174039889146,
        0.2902846772544624, 0.26671275747489837, 0.2429801799032639, 0.2191012401568698,
        0.19509032201612828, 0.17096188876030122, 0.14673047445536175, 0.1224106751992162,
        0.0980171403295606, 0.07356456359966743, 0.049067674327418015, 0.024541228522912288,
        0.0,
    };
};

// (cos, sin) of k pi/128 for any integer k, by exact quadrant symmetries.
template <class T>
inline void root128(int32_t k, T& c, T& s)
{
    k &= 255;
    const T* v = Cos128<T>::v;
    const int32_t q = k / 64, a = k % 64;
    switch (q) {
    case 0: c = v[a]; s = v[64 - a]; break;
    case 1: c = -v[64 - a]; s = v[a]; break;
    case 2: c = -v[a]; s = -v[64 - a]; break;
    default: c = v[64 - a]; s = -v[a]; break;
    }
}

// ---- Direct kernels ----------------------------------------------------------
template <class T> void direct2(const T* x, T* y);
template <class T> void direct4(const T* x, T* y);
template <class T> void direct8(const T* x, T* y);
template <class T> void direct16(const T* x, T* y);  // reference
template <class T> void direct32(const T* x, T* y);  // reference

// ---- First-pass kernels --------------------------------------------------------
// One group: gathers x[off + k*s] for k < M/2 and x[L - off - k*s] for
// M/2 <= k < M, writes out[k*t] for k < M.
template <class T>
using FirstKernel = void (*)(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t);
template <class T> void first2(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);
template <class T> void first4(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);
template <class T> void first8(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);
template <class T> void first16(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);  // reference
template <class T> void first32(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);  // reference
template <class T> void first64(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);  // reference

// ---- Second-pass kernels -------------------------------------------------------
// One group g: v points at the group's 2r scratch values (r real parts, then r
// imaginary parts), tw at its 2r table values; results go to y[g + j*S]
// (front) and y[L - g - (r + j)*S] (back).
template <class T>
using SecondKernel = void (*)(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L);
template <class T> void second1(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);
template <class T> void second2(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);
template <class T> void second4(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);
template <class T> void second8(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);   // reference
template <class T> void second16(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);  // reference
template <class T> void second32(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);  // reference

// ---- Nested radix pass (reference) --------------------------------------------
// One group g' of a nested stage of length M split as r' x M' (M' = M/r'):
// in points at the stage scratch, tw at the group's 2(r'-1) twiddles; results
// go to out[k*t] for the k the group produces.
template <class T>
void nested_radix_group(const T* in, const T* tw, uint32_t g, uint32_t r, uint32_t m, uint32_t m_sub, T* out,
                        uint32_t t);

// ---- Drivers ----------------------------------------------------------------------
template <class T> ZamStatus run_first_pass(const InputPass<T>* pass, const T* x, uint32_t base, T* out);
template <class T> ZamStatus run_second_pass(const OutputPass<T>* pass, const T* scratch, T* y);
// The whole transform for a specification; ZAM_STS_CONTEXT_ERR for a kind
// outside 1..6.  Pointers are checked by the caller.
template <class T> ZamStatus transform(const T* x, T* y, const Spec<T>* spec);

// Both passes for a leaf sub-length m and a radix r (N = m r) with the given
// table of N values and a scratch of N values: the kind-6 transform without
// a specification, for every pairing of the first- and second-pass kernels.
template <class T>
void two_pass(uint32_t m, uint32_t r, const T* x, T* scratch, const T* table, T* y);

} // namespace zam::dct4
