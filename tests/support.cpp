#include "support.hpp"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zt {

const std::vector<ComplexCodelets>& complex_codelets() {
#define ZT_COMPLEX_ENTRY(N)                                                                 \
    ComplexCodelets{N, zamgDFTFwd_CToC_##N##_32fc, zamgDFTInv_CToC_##N##_32fc,              \
                    zamgDFTFwd_CToC_##N##_64fc, zamgDFTInv_CToC_##N##_64fc},
    static const std::vector<ComplexCodelets> table{ZAM_FOR_EACH_LENGTH(ZT_COMPLEX_ENTRY)};
#undef ZT_COMPLEX_ENTRY
    return table;
}

const std::vector<RealCodelets>& real_codelets() {
#define ZT_REAL_ENTRY(N)                                                                          \
    RealCodelets{N,                                                                               \
                 {zamgDFTFwd_RToCCS_##N##_32f, zamgDFTFwd_RToPack_##N##_32f, zamgDFTFwd_RToPerm_##N##_32f}, \
                 {zamgDFTInv_CCSToR_##N##_32f, zamgDFTInv_PackToR_##N##_32f, zamgDFTInv_PermToR_##N##_32f}, \
                 {zamgDFTFwd_RToCCS_##N##_64f, zamgDFTFwd_RToPack_##N##_64f, zamgDFTFwd_RToPerm_##N##_64f}, \
                 {zamgDFTInv_CCSToR_##N##_64f, zamgDFTInv_PackToR_##N##_64f, zamgDFTInv_PermToR_##N##_64f}},
    static const std::vector<RealCodelets> table{ZAM_FOR_EACH_LENGTH(ZT_REAL_ENTRY)};
#undef ZT_REAL_ENTRY
    return table;
}

const std::vector<HartleyCodelets>& hartley_codelets() {
#define ZT_HARTLEY_ENTRY(N) HartleyCodelets{N, zamgHartley_##N##_32f, zamgHartley_##N##_64f},
    static const std::vector<HartleyCodelets> table{ZAM_FOR_EACH_LENGTH(ZT_HARTLEY_ENTRY)};
#undef ZT_HARTLEY_ENTRY
    return table;
}

int re_index(Layout l, int n, int k) {
    if (l == kCCS) return 2 * k;
    if (k == 0) return 0;
    if (2 * k == n) return l == kPack ? n - 1 : 1;
    return (l == kPerm && n % 2 == 0) ? 2 * k : 2 * k - 1;
}

int im_index(Layout l, int n, int k) {
    if (l == kCCS) return 2 * k + 1;
    return (l == kPerm && n % 2 == 0) ? 2 * k + 1 : 2 * k;
}

CLD root_of_unity(long e, long n, int sign) {
    long r = e % n;
    if (r < 0) r += n;
    const LD a = 2 * kPi * static_cast<LD>(r) / static_cast<LD>(n);
    return {std::cos(a), sign * std::sin(a)};
}

std::vector<CLD> reference_dft(const std::vector<CLD>& x, int sign) {
    const long n = static_cast<long>(x.size());
    std::vector<CLD> y(x.size());
    for (long k = 0; k < n; ++k) {
        CLD acc = 0;
        for (long j = 0; j < n; ++j) acc += x[static_cast<size_t>(j)] * root_of_unity(j * k, n, sign);
        y[static_cast<size_t>(k)] = acc;
    }
    return y;
}

LD relative_rms(const std::vector<CLD>& a, const std::vector<CLD>& b) {
    LD num = 0, den = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        num += std::norm(a[i] - b[i]);
        den += std::norm(b[i]);
    }
    return std::sqrt(num / den);
}

std::vector<std::pair<std::string, ManifestRow>> read_manifest() {
    std::ifstream in(ZAMGEN_MANIFEST);
    if (!in) throw std::runtime_error(std::string("cannot open ") + ZAMGEN_MANIFEST);
    std::vector<std::pair<std::string, ManifestRow>> rows;
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        std::string name;
        ManifestRow r;
        if (ls >> name >> r.n >> r.muls >> r.adds >> r.negs) rows.emplace_back(name, r);
    }
    return rows;
}

} // namespace zt
