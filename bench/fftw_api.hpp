// FFTW's API per precision, for the programs that compare the library with it.
#pragma once

#include <fftw3.h>

template <class T>
struct Fftw;
template <>
struct Fftw<float> {
    using Plan = fftwf_plan;
    using Complex = fftwf_complex;
    static constexpr auto alloc = fftwf_malloc, release = fftwf_free;
    static constexpr auto execute = fftwf_execute, destroy = fftwf_destroy_plan;
    static constexpr auto r2r = fftwf_plan_r2r;
    static constexpr auto dft_1d = fftwf_plan_dft_1d;
    static constexpr auto r2c_1d = fftwf_plan_dft_r2c_1d;
    static constexpr auto c2r_1d = fftwf_plan_dft_c2r_1d;
    static constexpr auto r2r_1d = fftwf_plan_r2r_1d;
};
template <>
struct Fftw<double> {
    using Plan = fftw_plan;
    using Complex = fftw_complex;
    static constexpr auto alloc = fftw_malloc, release = fftw_free;
    static constexpr auto execute = fftw_execute, destroy = fftw_destroy_plan;
    static constexpr auto r2r = fftw_plan_r2r;
    static constexpr auto dft_1d = fftw_plan_dft_1d;
    static constexpr auto r2c_1d = fftw_plan_dft_r2c_1d;
    static constexpr auto c2r_1d = fftw_plan_dft_c2r_1d;
    static constexpr auto r2r_1d = fftw_plan_r2r_1d;
};
