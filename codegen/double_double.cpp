#include "double_double.hpp"

#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

namespace zg {
namespace {

DoubleDouble two_sum(double a, double b) {
    double s = a + b;
    double bb = s - a;
    double e = (a - (s - bb)) + (b - bb);
    return {s, e};
}

DoubleDouble quick_two_sum(double a, double b) {
    double s = a + b;
    double e = b - (s - a);
    return {s, e};
}

void split(double a, double& hi, double& lo) {
    double t = 134217729.0 * a;  // 2^27 + 1
    hi = t - (t - a);
    lo = a - hi;
}

DoubleDouble two_prod(double a, double b) {
    double p = a * b;
    double ah, al, bh, bl;
    split(a, ah, al);
    split(b, bh, bl);
    double e = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
    return {p, e};
}

const DoubleDouble kPi{3.141592653589793116, 1.2246467991473532e-16};

// sin and cos of (pi/4) * p / q for 0 <= p <= q by Taylor series.
void sincos_octant(int64_t p, int64_t q, DoubleDouble& s, DoubleDouble& c) {
    if (p == 0) {
        s = DoubleDouble(0.0);
        c = DoubleDouble(1.0);
        return;
    }
    DoubleDouble x = kPi * DoubleDouble(static_cast<double>(p)) / DoubleDouble(4.0 * static_cast<double>(q));
    DoubleDouble x2 = x * x;
    DoubleDouble term = x;
    DoubleDouble sum = x;
    for (int k = 1; k < 40; ++k) {
        term = -(term * x2) / DoubleDouble(static_cast<double>((2 * k) * (2 * k + 1)));
        sum = sum + term;
        if (std::fabs(term.hi) < 1e-40) break;
    }
    s = sum;
    term = DoubleDouble(1.0);
    sum = DoubleDouble(1.0);
    for (int k = 1; k < 40; ++k) {
        term = -(term * x2) / DoubleDouble(static_cast<double>((2 * k - 1) * (2 * k)));
        sum = sum + term;
        if (std::fabs(term.hi) < 1e-40) break;
    }
    c = sum;
}

// cos and sin of 2*pi*num/den, reduced exactly to the first octant.  The
// series take most of the time of building the graphs, and the recipes ask
// for the same angles again and again, so each thread keeps what it computed.
void sincos2pi(int64_t num, int64_t den, DoubleDouble& s, DoubleDouble& c) {
    int64_t r = num % den;
    if (r < 0) r += den;
    thread_local std::map<std::pair<int64_t, int64_t>, std::pair<DoubleDouble, DoubleDouble>> known;
    if (const auto it = known.find({r, den}); it != known.end()) {
        s = it->second.first, c = it->second.second;
        return;
    }
    int64_t o = (8 * r) / den;
    int64_t r8 = 8 * r - o * den;  // angle within the octant: (pi/4) * r8/den
    DoubleDouble sf, cf, sp, cp;
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
    known.emplace(std::pair{r, den}, std::pair{s, c});
}

} // namespace

DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
    DoubleDouble s = two_sum(a.hi, b.hi);
    DoubleDouble t = two_sum(a.lo, b.lo);
    s.lo += t.hi;
    s = quick_two_sum(s.hi, s.lo);
    s.lo += t.lo;
    return quick_two_sum(s.hi, s.lo);
}

DoubleDouble operator-(DoubleDouble a) { return {-a.hi, -a.lo}; }
DoubleDouble operator-(DoubleDouble a, DoubleDouble b) { return a + (-b); }

DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
    DoubleDouble p = two_prod(a.hi, b.hi);
    p.lo += a.hi * b.lo + a.lo * b.hi;
    return quick_two_sum(p.hi, p.lo);
}

DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
    double q1 = a.hi / b.hi;
    DoubleDouble r = a - b * DoubleDouble(q1);
    double q2 = r.hi / b.hi;
    r = r - b * DoubleDouble(q2);
    double q3 = r.hi / b.hi;
    DoubleDouble q = quick_two_sum(q1, q2);
    return q + DoubleDouble(q3);
}

DoubleDouble cos2pi(int64_t num, int64_t den) {
    DoubleDouble s, c;
    sincos2pi(num, den, s, c);
    return c;
}

DoubleDouble sin2pi(int64_t num, int64_t den) {
    DoubleDouble s, c;
    sincos2pi(num, den, s, c);
    return s;
}

} // namespace zg
