// What every generated codelet shares: the pointer and flag checks and the
// choice of the scale factor.  Header-only and inlined, so a codelet stays one
// leaf function.
#pragma once

#include "frame/access.hpp"
#include "frame/scale_rule.hpp"
#include "zamgen.h"

// Before a vector body the codelet compiler may mark to be scheduled by GCC
// for register pressure before registers are allocated (-fschedule-insns
// -fsched-pressure), where that was measured faster: fewer values spill to
// the stack.  Scheduling only orders independent instructions, so the
// results are the same.
#if defined(__GNUC__) && !defined(__clang__)
#define ZAM_SCHEDULE_FOR_PRESSURE __attribute__((optimize("schedule-insns", "sched-pressure")))
#else
#define ZAM_SCHEDULE_FOR_PRESSURE
#endif

namespace zam {

// Checks the pointers (first) and the flag; on success stores the scale
// factor selected by the flag.  inv_n and inv_sqrt_n are the codelet's own
// literals, so no division or square root happens at run time.
template <class T>
[[gnu::always_inline]] inline ZamStatus pick_scale(const void* src, const void* dst, uint32_t flag, ScaleRule rule,
                            T inv_n, T inv_sqrt_n, T& s) noexcept
{
    if (src == nullptr || dst == nullptr) return ZAM_STS_NULL_PTR_ERR;
    switch (flag) {
    case ZAM_DIV_FWD_BY_N:
        s = rule == ScaleRule::Inverse ? T(1) : inv_n;
        return ZAM_STS_OK;
    case ZAM_DIV_INV_BY_N:
        s = rule == ScaleRule::Forward ? T(1) : inv_n;
        return ZAM_STS_OK;
    case ZAM_DIV_BY_SQRTN:
        s = inv_sqrt_n;
        return ZAM_STS_OK;
    case ZAM_NODIV_BY_ANY:
        s = T(1);
        return ZAM_STS_OK;
    default:
        return ZAM_STS_FLAG_ERR;
    }
}

} // namespace zam
