// Lowering: a codelet's graph for one precision becomes a typed instruction
// list, the form every printer works from.
//
// All loads come first and all stores last, so every codelet is valid in
// place (a graph may ask for loads and stores next to their uses; every load
// still precedes the first store).  Each instruction names the precision it computes in: the
// single-precision codelet evaluates products by constants and their
// combinations in double and rounds them once; the double-precision codelet
// computes everything in double and has no rounding steps.  A graph can ask
// for the element precision throughout, and for loads and stores placed next
// to their uses (see CodeletGraph).
#pragma once

#include "codelet.hpp"
#include "frame/scale_rule.hpp"

#include <string>
#include <vector>

namespace zg {

enum class Type : uint8_t { F32, F64 };

enum class Opcode : uint8_t {
    Load,      // result = source scalar `slot`
    Add,       // result = a + b
    Sub,       // result = a - b
    MulConst,  // result = constant * a
    Mul,       // result = a * b
    Round,     // result = a rounded to float
    Store,     // destination scalar `slot` = a scaled as `mode` says
};

// A value number, possibly negated; value 0 is the constant zero.
struct Operand {
    int32_t value = 0;
    bool neg = false;
};

struct Instr {
    Opcode op = Opcode::Load;
    Type type = Type::F64;     // precision of the result (of the element, for a store)
    int32_t result = 0;        // the value defined: its graph node, so names are stable
    Operand a, b;
    double constant = 0.0;     // MulConst
    int32_t slot = 0;          // Load and Store: scalar index
    Store mode = Store::Plain; // Store
    int32_t last_use = -1;     // index of the last instruction that reads the result
    LaneTags lanes{};          // where the recipe built it (metadata for the vector printers)
};

// What the printed function looks like.
enum class Form {
    Codelet,          // ZamStatus name(const T* src, T* dst, uint32_t flag): checks, scale from the flag
    BufferedCodelet,  // the same with a work buffer argument that it does not use
    Block,            // void name(const T* src, ptrdiff_t is, T* dst, ptrdiff_t os): strided, no checks
    ScaledBlock,      // the same with a scale factor argument T s
    // The DCT-IV kernels (namespace zam::dct4), no checks; n is the kernel's
    // length or radix.
    Dct4Direct,       // void name(const T* x, T* y): x[slot], y[slot]
    Dct4First,        // void name(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t):
                      // slot k < n/2 from x[off + k s], the others from x[L - off - k s]; out[k t]
    Dct4Second,       // void name(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L):
                      // slots below 2n from v, the others from tw; result j < n to y[g + j S],
                      // result n + j to y[L - g - (n + j) S]
    Dct4Radix,        // void name(const T* v, const T* tw, T* front, T* back, ptrdiff_t step, ptrdiff_t t):
                      // loads as Dct4Second; complex result l (slots 2l, 2l + 1) to
                      // front[l step], front[l step + t] for l < n/2, else back[-l step], back[t - l step]
};

struct Signature {
    std::string function;     // e.g. zamgDFTFwd_CToC_16_32fc
    std::string element;      // C type of one element, e.g. Zam32fc
    bool complex_elements = false;
    zam::ScaleRule rule = zam::ScaleRule::Forward;
    int n = 0;                // the scale literals are 1/n and 1/sqrt(n)
    Form form = Form::Codelet;
};

struct Program {
    Signature sig;
    Type scalar = Type::F64;  // the element's scalar type
    std::string plan;
    std::vector<Instr> code;
};

Program lower(const CodeletGraph& c, const Signature& sig, Precision p);

} // namespace zg
