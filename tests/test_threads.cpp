// Eight threads call random functions of every family at once: codelets
// through their dispatchers, Walsh-Hadamard codelets and entries with a
// buffer of the thread's own or none, the DCT-IV on specifications of the
// thread's own and, for lengths 2 to 32, on specifications all threads share.
// Every result must have the bits the same call gave on one thread before.
#include "support.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <thread>

namespace {

using namespace zt;

// A thread's own memory: a Walsh-Hadamard work buffer of the largest size and
// a DCT-IV specification of every length 2 to 4096 in both precisions.
struct Own {
    std::vector<uint8_t> wht_buffer = std::vector<uint8_t>(73728);
    void* spec[2][13] = {};  // [single][log2 N]
    Own() {
        for (int s = 0; s < 2; ++s)
            for (int k = 1; k <= 12; ++k) dct4_api(s).init_alloc(&spec[s][k], 1 << k);
    }
    ~Own() {
        for (int s = 0; s < 2; ++s)
            for (int k = 1; k <= 12; ++k) dct4_api(s).free(spec[s][k]);
    }
};

// One call: its input, the call given the arrays and the caller's own
// memory, and the result it gave on one thread.
struct Job {
    std::string name;
    std::vector<uint8_t> input, want;
    std::function<ZamStatus(const uint8_t*, uint8_t*, Own&)> call;
};

TEST(Threads, EveryFamilyGivesTheSameBitsOnEightThreadsAtOnce) {
    const std::vector<std::string> fams = families();
    const Own shared;  // its lengths 2 to 32 serve every thread
    std::mt19937_64 rng(11);
    std::vector<Job> jobs;
    Own mine;
    for (int i = 0; i < 320; ++i) {
        const bool single = rng() % 2;
        const size_t w = single ? 4 : 8;
        const uint32_t flag = kFlags[rng() % 4];
        Job j;
        if (i % 4 == 0) {
            const Case& c = *cases_of(fams[rng() % fams.size()])[rng() % 63];
            const size_t cw = c.single ? 4 : 8;
            j = {c.name, std::vector<uint8_t>(static_cast<size_t>(c.in) * cw), std::vector<uint8_t>(static_cast<size_t>(c.out) * cw),
                 [&c, flag](const uint8_t* s, uint8_t* d, Own&) { return c.dispatch(s, d, c.n, flag); }};
            store_scalars(c.input(rng()), c.single, j.input.data());
        } else if (i % 4 == 1) {
            const WhtCase& c = wht_cases()[rng() % 26];
            const int way = static_cast<int>(rng() % 3);  // own buffer, none, the order entry with none
            const size_t cw = c.single ? 4 : 8;
            j = {c.name, std::vector<uint8_t>(c.n() * cw), std::vector<uint8_t>(c.n() * cw),
                 [&c, flag, way](const uint8_t* s, uint8_t* d, Own& own) {
                     return way == 2 ? c.entry(s, d, c.order, flag, nullptr)
                                     : c.call(s, d, flag, way == 0 ? own.wht_buffer.data() : nullptr);
                 }};
            store_scalars(random_scalars(rng(), c.n(), c.single), c.single, j.input.data());
        } else {
            const bool own = i % 4 == 2;
            const int k = 1 + static_cast<int>(rng() % (own ? 12 : 5));
            void* const spec = shared.spec[single][k];
            j = {"DCT-IV " + std::to_string(1 << k) + (own ? " own" : " shared"),
                 std::vector<uint8_t>(w << k), std::vector<uint8_t>(w << k),
                 [=](const uint8_t* s, uint8_t* d, Own& mine) {
                     return dct4_api(single).run(s, d, own ? mine.spec[single][k] : spec);
                 }};
            store_scalars(random_scalars(rng(), size_t{1} << k, single), single, j.input.data());
        }
        ASSERT_EQ(j.call(j.input.data(), j.want.data(), mine), ZAM_STS_OK) << j.name;
        jobs.push_back(std::move(j));
    }

    constexpr int kThreads = 8, kCalls = 400;
    std::array<int, kThreads> wrong{};
    std::array<std::string, kThreads> first{};
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([&, t] {
            Own own;
            std::mt19937_64 pick(static_cast<uint64_t>(t));
            for (int i = 0; i < kCalls; ++i) {
                const Job& j = jobs[pick() % jobs.size()];
                std::vector<uint8_t> d(j.want.size());
                if (j.call(j.input.data(), d.data(), own) != ZAM_STS_OK || d != j.want)
                    if (wrong[static_cast<size_t>(t)]++ == 0) first[static_cast<size_t>(t)] = j.name;
            }
        });
    for (std::thread& t : pool) t.join();
    for (size_t t = 0; t < kThreads; ++t) EXPECT_EQ(wrong[t], 0) << "thread " << t << ", first " << first[t];
}

}  // namespace
