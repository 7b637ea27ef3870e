// The codelet families: each turns the transform recipes into the graph of
// one exported codelet (input layout, output layout and the stores), recording
// the plan it chose.
#pragma once

#include "../codelet.hpp"
#include "../lower.hpp"
#include "../planner.hpp"
#include "../surface.hpp"

namespace zg {

CodeletGraph build_codelet(Planner& planner, const Family& f, int n);

CodeletGraph complex_codelet(Planner& planner, int n, int sign);
CodeletGraph real_forward_codelet(Planner& planner, int n, Layout l);
CodeletGraph real_inverse_codelet(Planner& planner, int n, Layout l);
CodeletGraph hartley_codelet(Planner& planner, int n);

// The Walsh-Hadamard transform of n points, every output stored as `mode` says.
CodeletGraph wht_graph(int n, Store mode);

// The straight-line blocks that hand-written transforms are built from:
// void name_<type>(src, is, dst, os[, s]), strided, unscaled or scaled.
struct Block {
    std::string name;
    int n;
    bool scaled;
};
const std::vector<Block>& internal_blocks();

// The straight-line kernels of the DCT-IV (namespace zam::dct4), one name
// for both precisions (overloads).
enum class Dct4Kind {
    Direct,     // the whole transform of n = 16 or 32 points (Form::Dct4Direct)
    First,      // one first-pass group of n points (Form::Dct4First)
    Second,     // one second-pass group of radix n (Form::Dct4Second)
    RadixEven,  // one group of a nested stage's radix pass, radix n, even group index (Form::Dct4Radix)
    RadixOdd,   // the same for an odd group index, whose values enter conjugated
};
struct Dct4Block {
    std::string name;
    Dct4Kind kind;
    int n;
    Form form() const {
        switch (kind) {
        case Dct4Kind::Direct: return Form::Dct4Direct;
        case Dct4Kind::First: return Form::Dct4First;
        case Dct4Kind::Second: return Form::Dct4Second;
        default: return Form::Dct4Radix;
        }
    }
};
const std::vector<Dct4Block>& dct4_blocks();
CodeletGraph dct4_graph(Planner& planner, const Dct4Block& b);

} // namespace zg
