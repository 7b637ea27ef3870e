// The DCT-IV specification: its records, the size planner, the plan builder
// and the release operations, in both precisions.  Everything is carved from
// one arena in a fixed order, so the planner's total is exactly what Init
// takes; every release gives back what its record took.
//
// Plan of a length N >= 64 with radix r (radix choice of N/2) and sub-length
// M = N/r (N = 2rG with G = M/2):
//   first pass   r groups; group i gathers x[i + 2r*k] (front, k < M/2) and
//                x[2N-1 - i - 2r*k] (back, k >= M/2), runs an M-point kernel
//                and writes scratch[i + k*r], k < M;
//   second pass  G groups; group g takes the r complex values
//                (scratch[2r*g + p], scratch[2r*g + r + p]), rotates value p
//                by theta = pi(2g+1)(2p+1)/(4N) from the table, runs a radix-r
//                kernel and stores result j at y[g + j*M] (real part) and
//                y[N-1 - g - j*M] (imaginary part).
// A sub-length above 64 is split again by a nested stage (its own first pass
// and a radix pass with twiddles) in place of a single M-point kernel.
#pragma once

#include "dct4/arena.hpp"
#include "dct4/table_slot.hpp"

#include <cstdint>

namespace zam::dct4 {

// Record sizes: the bytes each record occupies in the arena.
inline constexpr uint32_t kSpecBytes = 80;
inline constexpr uint32_t kAngleGenBytes = 56;
inline constexpr uint32_t kPassBytes = 88;         // output pass, input pass
inline constexpr uint32_t kNestedBytes = 96;       // nested stage and its passes
inline constexpr uint32_t kFractionGenBytes = 40;

// Alignment headroom that GetSize adds to the planner's total.
inline constexpr uint32_t kHeadroom = 2 * kGranule;

// Largest legal length: past it the buffer size no longer fits a signed
// 32-bit byte count (GetSize refuses it through the planner; this is the
// value the header documents).
template <class T> inline constexpr int32_t kMaxLength = sizeof(T) == 4 ? (1 << 27) : (1 << 26);

// Sub-lengths that a first pass runs as one straight kernel (leaf kinds 1..6
// for M = 2..64); kind 7 is a nested stage.
inline constexpr uint32_t kNestedKind = 7;

// Common prefix of every plan record.
struct RecordHeader {
    Owned own;
    ZamStatus (*build)(void* self);
    Arena arena;
};

template <class T> struct AngleGen;
template <class T> struct FractionGen;
template <class T> struct OutputPass;
template <class T> struct InputPass;
template <class T> struct NestedStage;
template <class T> struct RadixPass;

// The specification record (80 bytes).
template <class T>
struct Spec {
    RecordHeader hdr;
    ListNode* children;  // owned records: angle generator, output pass, input pass
    ListNode* second;    // output pass, its table, its angle generator
    ListNode* first;     // input pass, the scratch it writes
    T* scratch;          // N elements (kind 6), else null
    uint32_t kind;       // 1..5 direct kernel of 2..32, 6 two-pass; 0 before the build
    uint32_t radix;
    uint32_t length;
};

// Cosines and sines of the second pass (56 bytes): parameters columns 2r,
// denominator 8N, rows N/(2r), divisor r, row stride 2r.
template <class T>
struct AngleGen {
    RecordHeader hdr;
    uint32_t columns, denominator, rows, divisor, row_stride;
};

// Angle fractions of a nested stage's twiddles (40 bytes): (k + 0.5) divided
// by the integer quotient num / den.
template <class T>
struct FractionGen {
    RecordHeader hdr;
    uint32_t num, den;
};

// Second pass (88 bytes).
template <class T>
struct OutputPass {
    RecordHeader hdr;
    ListNode* source;  // the angle generator its table is filled from
    T* table;          // N values: N/(2r) rows of r (cos, sin) pairs
    AngleGen<T>* gen;
    uint32_t kind;     // 1..6 for r = 1, 2, 4, 8, 16, 32
    uint32_t radix, groups, in_stride, out_step, mirror, length;
};

// First pass of the top level (88 bytes) or of a nested stage (96 bytes).
template <class T>
struct InputPass {
    RecordHeader hdr;
    ListNode* children;  // the nested stage (kind 7)
    ListNode* passes;    // kind 7: the nested stage, its input pass, its radix pass
    NestedStage<T>* stage;
    uint32_t kind;       // 1..6 for M = 2..64, 7 nested
    uint32_t sub_length; // M
    uint32_t count;      // groups
    uint32_t group_step; // distance in the source between two groups' first elements
    uint32_t in_stride;  // s
    uint32_t out_stride; // t
    uint32_t mirror;     // L
};

// A sub-length M above 64, split again with radix r' (96 bytes).
template <class T>
struct NestedStage {
    RecordHeader hdr;
    ListNode* children;  // fraction generator, radix pass, input pass
    ListNode* second;    // radix pass, its twiddles, its fraction generator
    ListNode* first;     // input pass, the scratch it writes
    T* scratch;          // M elements
    uint32_t length;     // M
    uint32_t radix;      // r'
    uint32_t group_step, in_stride, mirror;  // of the input pass that owns the stage
};

// The output side of a nested stage (96 bytes): m = M/(2r') groups.
template <class T>
struct RadixPass {
    RecordHeader hdr;
    ListNode* source;    // the fraction generator
    T* twiddles;         // 2(r'-1) values a group
    FractionGen<T>* gen;
    uint32_t kind;       // 1..5 for r' = 2..32
    uint32_t radix, groups, length /* M */, sub_length /* M/r' */;
};

// The planner's total of Init for a length (without the headroom), in 64-bit
// arithmetic; a negative value is ZAM_STS_SIZE_ERR.
template <class T> int64_t planner_total(int32_t n);

// GetSize: the total plus the headroom; ZAM_STS_SIZE_ERR for an illegal
// length or a size past INT32_MAX.
template <class T> ZamStatus get_size(int32_t n, uint32_t* size);

// Init: sets the cursor in the buffer's first word, builds the specification.
template <class T> ZamStatus init(Spec<T>** out, int32_t n, uint8_t* buffer);

// Gives back everything the specification took, including its own record;
// the cursor then stands where Init put it.
template <class T> void destroy(Spec<T>* spec);

// Fills a second-pass table for length n and radix r (the angle generator's
// values in the table order), as Init does.
template <class T> void fill_second_pass_table(T* table, uint32_t n, uint32_t r);

} // namespace zam::dct4

namespace zam::dct4 {
static_assert(sizeof(Spec<double>) <= kSpecBytes && sizeof(AngleGen<double>) <= kAngleGenBytes);
static_assert(sizeof(OutputPass<double>) <= kPassBytes && sizeof(InputPass<double>) <= kPassBytes);
static_assert(sizeof(NestedStage<double>) <= kNestedBytes && sizeof(RadixPass<double>) <= kNestedBytes);
static_assert(sizeof(FractionGen<double>) <= kFractionGenBytes);
} // namespace zam::dct4
