// Index arithmetic the recipes share: residues, primes, and the maps between
// one index of length n1*n2 and a pair of indices.
#pragma once

#include <stdexcept>
#include <vector>

namespace zg {

inline long mod(long a, long n) {
    const long r = a % n;
    return r < 0 ? r + n : r;
}

inline bool is_prime(int n) {
    if (n < 2) return false;
    for (int d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return true;
}

// The divisors of n other than 1 and n.
inline std::vector<int> proper_divisors(int n) {
    std::vector<int> d;
    for (int k = 2; k < n; ++k)
        if (n % k == 0) d.push_back(k);
    return d;
}

// The coprime prime-power factors of n: powers of two first, then the odd
// prime powers by increasing prime (12 = 4 x 3, 45 = 9 x 5, 60 = 4 x 3 x 5).
inline std::vector<int> prime_power_factors(int n) {
    std::vector<int> f;
    for (int p = 2; n > 1; ++p) {
        if (n % p) continue;
        int q = 1;
        while (n % p == 0) {
            n /= p;
            q *= p;
        }
        f.push_back(q);
    }
    return f;
}

// The smallest generator of the non-zero residues modulo the prime n.
inline int primitive_root(int n) {
    for (int r = 2; r < n; ++r) {
        long x = 1;
        int order = 0;
        do {
            x = x * r % n;
            ++order;
        } while (x != 1);
        if (order == n - 1) return r;
    }
    throw std::logic_error("no primitive root");
}

// Prime-factor (Good-Thomas) map for coprime n1, n2: inner indices (a, b)
// read the input at (n2 a + n1 b) mod n1 n2, and the output of inner
// frequencies (k1, k2) is the k with k = k1 mod n1 and k = k2 mod n2.
inline int pfa_input(int a, int b, int n1, int n2) { return (n2 * a + n1 * b) % (n1 * n2); }
inline int crt(int k1, int n1, int k2, int n2) {
    int k = 0;
    while (k % n1 != k1 || k % n2 != k2) ++k;
    return k;
}
// The odd k with k = k1 mod p (p even, k1 odd) and k = k2 mod q (q odd).
inline int crt_odd(int k1, int p, int k2, int q) {
    int k = 1;
    while (k % p != k1 || k % q != k2) k += 2;
    return k;
}

// n = half_p * q with half_p a power of two and q odd.
inline void split_power_of_two(int n, int& half_p, int& q) {
    half_p = 1;
    while (n % (2 * half_p) == 0) half_p *= 2;
    q = n / half_p;
}

} // namespace zg
