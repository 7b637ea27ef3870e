// The vector printer for codelets (Form::Codelet, BufferedCodelet).
//
// Pairs of isomorphic instructions of the lowered list share one 128-bit
// vector: neighbouring loads (the two parts of a complex element, or two
// neighbouring reals) seed the pairs, and pairs of their users follow, as far
// as both lanes perform the same kind of operation in the same precision.
// Each lane performs exactly its instruction's operation: the same operands,
// the same precision, no fusion.  A lane's sum may take its operands in the
// other order (a sum commutes exactly) and a negation may move between an
// operand, a constant and the choice of sum or difference (each is an exact
// sign change); a difference keeps its order.  Single-precision data use
// the low two lanes of a float vector, products and their combinations a
// double vector.  Unpaired instructions stay scalar, reading lanes out of
// vectors where they need them.  The function has the scalar codelet's
// signature and checks and lives in namespace `ns`; the intrinsics are SSE2,
// so the same text compiles for any x86-64 instruction set.
#pragma once

#include "lower.hpp"

#include <string>
#include <vector>

namespace zg {

// `packed_share`, if given, receives the share of arithmetic instructions
// that run in pairs.
std::string print_simd(const Program& prog, const std::string& ns, double* packed_share = nullptr);

// The same for AVX2: pairs whose lanes are isomorphic instruction for
// instruction are grouped further into quads, found as pairs are
// (neighbouring loads and stores seed them, quads extend to their operands
// and to their users by the cheapest operand vectors), and run in 256-bit
// double vectors; single-precision quads keep their data in the four lanes
// of a float vector, widened for products and narrowed where the scalar code
// rounds.  Pairs without a partner stay 128-bit, lone instructions scalar.
// Single-precision loads, sums and differences may also run as octets of
// floats in 256-bit vectors (the products stay in quads of doubles), where
// that takes at least 7% fewer instructions.
std::string print_avx2(const Program& prog, const std::string& ns);

// The AVX2 bodies print_avx2 chooses among by its estimate and a few more,
// each named by a key (pairs alone; quads under each limit, seeding and
// pairing, with and without the real-data recipes' batches; octets of floats
// on each; each in two orders), and the body of one key.  All give the same
// bits; which runs fastest is measured (zamgen-tune-avx2) and kept in a table.
//
// A single-precision body may also be packed as the double-precision body of
// the same codelet is: key "f64:" and that body's key, `twin` the
// double-precision program.  Its vectors are then the double-precision
// body's, its roundings in the lanes of the values they round; what that
// leaves unpacked is packed as usual.
std::vector<std::string> avx2_variants(const Program& prog);
std::string print_avx2(const Program& prog, const std::string& ns, const std::string& key,
                       const Program* twin = nullptr);
// The key of the body print_avx2(prog, ns) prints, for double precision.
std::string avx2_estimate_key(const Program& prog);

// An estimate of the instructions a printed vector body runs.
int estimated_instructions(const std::string& body);

// The same for AVX-512: quads whose lanes are isomorphic are grouped further
// into octets, found as the quads are, and run in 512-bit double vectors
// (single-precision data in the eight lanes of a 256-bit float vector);
// quads, pairs and lone instructions without a partner stay as in the AVX2
// body.  Empty where no body with octets takes fewer instructions than the
// AVX2 body with quads alone; `gain`, if given, receives the share of that
// body's instructions it saves.  Which codelets run an AVX-512 body, and
// which variant, is measured (zamgen-tune-avx512) and kept in a table.  A
// variant key is "b,m": b = 1 where the real-data recipes' batches seed
// lanes too (as in the AVX2 body; offered only where there are some), 0
// where only the complex recipes' batches do; m = 1 where sums are printed
// as differences and addsubs and loads and stores placed next to their
// uses, as in the AVX2 body, 0 where they are printed as they always were.
// (The compiler also offers AVX2 bodies as AVX-512 variants: with the 32
// vector registers of AVX-512 they spill less.)
std::vector<std::string> avx512_variants(const Program& prog);
std::string print_avx512(const Program& prog, const std::string& ns, const std::string& key, double* gain = nullptr);

} // namespace zg
