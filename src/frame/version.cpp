// The library's constant version record.
#include "zamgen.h"

namespace {

constexpr ZamLibVersion kVersion = {
    6, 1, 137, 316, {'m', 'x', '\0', '\0'}, "zamgenmx-6.1.dll", "6.1 build 137.36", "Sep 29 2009",
};

} // namespace

extern "C" const ZamLibVersion* zamgenGetLibVersion(void) { return &kVersion; }
