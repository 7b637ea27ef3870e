// The library's exported surface in one table: every family of generated
// transforms with its naming, lengths, element types, input and output sizes
// and scale rule.  The compiler writes from it the codelets, the public
// declarations, the dispatch tables, the export lists of both linkers and the
// registry the tests iterate over.
#pragma once

#include "budgets.hpp"
#include "codelet.hpp"
#include "frame/scale_rule.hpp"

#include <string>
#include <vector>

namespace zg {

enum class Transform { ComplexDft, RealForward, RealInverse, Hartley, Wht };
enum class Layout { None, CCS, Pack, Perm };

struct Family {
    const char* prefix;     // the name up to the length, e.g. "zamgDFTFwd_CToC"
    Transform transform;
    int sign;               // exponent sign of a DFT: -1 forward, +1 inverse
    Layout layout;          // of the packed half spectrum (real transforms)
    zam::ScaleRule rule;
    bool complex_elements;  // 32fc/64fc, else 32f/64f
    int first, last;        // the sizes in the names: lengths, or orders of the Walsh-Hadamard transform
    int generated_last;     // the codelets of larger sizes are written by hand
    bool dispatcher;        // prefix_<type> takes the size at run time
    const char* summary;    // one line for the header
};

const std::vector<Family>& families();

// Exports that are written by hand (declared in include/zamgen.h).
const std::vector<std::string>& hand_written_exports();

// The transform length of a size in the names (2^order for the Walsh-Hadamard transform).
int length_of(const Family& f, int size);
std::string element_suffix(const Family& f, Precision p);   // "32fc"
std::string element_type(const Family& f, Precision p);     // "Zam32fc"
std::string codelet_name(const Family& f, int n, Precision p);
std::string dispatcher_name(const Family& f, Precision p);
// The operation budget of a codelet, or null where none is set.
const Budget* budget_of(const Family& f, int n);
int input_elements(const Family& f, int n);
int output_elements(const Family& f, int n);

// The files derived from the table, as (name, content) pairs.
std::vector<std::pair<std::string, std::string>> surface_files();

} // namespace zg
