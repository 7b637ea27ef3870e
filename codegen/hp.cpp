#include "hp.hpp"

#include <cmath>
#include <cstdlib>

namespace zg {
namespace {

DD two_sum(double a, double b) {
    double s = a + b;
    double bb = s - a;
    double e = (a - (s - bb)) + (b - bb);
    return {s, e};
}

DD quick_two_sum(double a, double b) {
    double s = a + b;
    double e = b - (s - a);
    return {s, e};
}

void split(double a, double& hi, double& lo) {
    double t = 134217729.0 * a;  // 2^27 + 1
    hi = t - (t - a);
    lo = a - hi;
}

DD two_prod(double a, double b) {
    double p = a * b;
    double ah, al, bh, bl;
    split(a, ah, al);
    split(b, bh, bl);
    double e = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
    return {p, e};
}

const DD kPi{3.141592653589793116, 1.2246467991473532e-16};

// sin and cos of (pi/4) * p / q for 0 <= p <= q by Taylor series.
void sincos_octant(int64_t p, int64_t q, DD& s, DD& c) {
    if (p == 0) {
        s = DD(0.0);
        c = DD(1.0);
        return;
    }
    DD x = kPi * DD(static_cast<double>(p)) / DD(4.0 * static_cast<double>(q));
    DD x2 = x * x;
    DD term = x;
    DD sum = x;
    for (int k = 1; k < 40; ++k) {
        term = -(term * x2) / DD(static_cast<double>((2 * k) * (2 * k + 1)));
        sum = sum + term;
        if (std::fabs(term.hi) < 1e-40) break;
    }
    s = sum;
    term = DD(1.0);
    sum = DD(1.0);
    for (int k = 1; k < 40; ++k) {
        term = -(term * x2) / DD(static_cast<double>((2 * k - 1) * (2 * k)));
        sum = sum + term;
        if (std::fabs(term.hi) < 1e-40) break;
    }
    c = sum;
}

// cos and sin of 2*pi*num/den, reduced exactly to the first octant.
void sincos2pi(int64_t num, int64_t den, DD& s, DD& c) {
    int64_t r = num % den;
    if (r < 0) r += den;
    int64_t o = (8 * r) / den;
    int64_t r8 = 8 * r - o * den;  // angle within the octant: (pi/4) * r8/den
    DD sf, cf, sp, cp;
    sincos_octant(r8, den, sf, cf);          // phi
    sincos_octant(den - r8, den, sp, cp);    // pi/4 - phi
    switch (o) {
    case 0: c = cf;  s = sf;  break;
    case 1: c = sp;  s = cp;  break;
    case 2: c = -sf; s = cf;  break;
    case 3: c = -cp; s = sp;  break;
    case 4: c = -cf; s = -sf; break;
    case 5: c = -sp; s = -cp; break;
    case 6: c = sf;  s = -cf; break;
    default: c = cp; s = -sp; break;
    }
}

} // namespace

DD operator+(DD a, DD b) {
    DD s = two_sum(a.hi, b.hi);
    DD t = two_sum(a.lo, b.lo);
    s.lo += t.hi;
    s = quick_two_sum(s.hi, s.lo);
    s.lo += t.lo;
    return quick_two_sum(s.hi, s.lo);
}

DD operator-(DD a) { return {-a.hi, -a.lo}; }
DD operator-(DD a, DD b) { return a + (-b); }

DD operator*(DD a, DD b) {
    DD p = two_prod(a.hi, b.hi);
    p.lo += a.hi * b.lo + a.lo * b.hi;
    return quick_two_sum(p.hi, p.lo);
}

DD operator/(DD a, DD b) {
    double q1 = a.hi / b.hi;
    DD r = a - b * DD(q1);
    double q2 = r.hi / b.hi;
    r = r - b * DD(q2);
    double q3 = r.hi / b.hi;
    DD q = quick_two_sum(q1, q2);
    return q + DD(q3);
}

bool operator<(DD a, DD b) { return a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo); }

DD dd_abs(DD a) { return a.hi < 0.0 || (a.hi == 0.0 && a.lo < 0.0) ? -a : a; }

DD dd_sqrt(DD a) {
    if (a.hi <= 0.0) return DD(0.0);
    DD x(std::sqrt(a.hi));
    for (int i = 0; i < 2; ++i) x = x + (a - x * x) / (DD(2.0) * x);
    return x;
}

DD cos2pi(int64_t num, int64_t den) {
    DD s, c;
    sincos2pi(num, den, s, c);
    return c;
}

DD sin2pi(int64_t num, int64_t den) {
    DD s, c;
    sincos2pi(num, den, s, c);
    return s;
}

} // namespace zg
