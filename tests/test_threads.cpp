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
    bool single;
    Scalars x;
    size_t out;  // elements
    std::function<ZamStatus(const uint8_t*, uint8_t*, Own&)> call;
    std::vector<uint8_t> input{}, want{};  // filled from x, and by the single-threaded call
};

TEST(Threads, EveryFamilyGivesTheSameBitsOnEightThreadsAtOnce) {
    const std::vector<std::string> fams = families();
    const Own shared;  // its lengths 2 to 32 serve every thread
    std::mt19937_64 rng(11);
    std::vector<Job> jobs;
    Own mine;
    for (int i = 0; i < 320; ++i) {
        const uint32_t flag = kFlags[rng() % 4];
        Job j;
        if (i % 4 == 0) {  // a codelet through its dispatcher
            const Case& c = *cases_of(fams[rng() % fams.size()])[rng() % 63];
            j = {c.name, c.single, c.input(rng()), static_cast<size_t>(c.out),
                 [&c, flag](const uint8_t* s, uint8_t* d, Own&) { return c.dispatch(s, d, c.n, flag); }};
        } else if (i % 4 == 1) {  // with the thread's buffer, with none, through the order entry with none
            const WhtCase& c = wht_cases()[rng() % 26];
            const uint64_t way = rng() % 3;
            j = {c.name, c.single, random_scalars(rng(), c.n(), c.single), c.n(),
                 [&c, flag, way](const uint8_t* s, uint8_t* d, Own& own) {
                     return way == 2 ? c.entry(s, d, c.order, flag, nullptr)
                                     : c.call(s, d, flag, way == 0 ? own.wht_buffer.data() : nullptr);
                 }};
        } else {  // the DCT-IV on the thread's own specification, or on one all threads share
            const bool single = rng() % 2, own = i % 4 == 2;
            const size_t k = 1 + rng() % (own ? 12 : 5), n = size_t{1} << k;
            void* const spec = shared.spec[single][k];
            j = {"DCT-IV " + std::to_string(n) + (own ? " own" : " shared"), single, random_scalars(rng(), n, single), n,
                 [=](const uint8_t* s, uint8_t* d, Own& mine) {
                     return dct4_api(single).run(s, d, own ? mine.spec[single][k] : spec);
                 }};
        }
        j.input.resize(j.x.size() * (j.single ? 4 : 8));
        j.want.resize(j.out * (j.single ? 4 : 8));
        store_scalars(j.x, j.single, j.input.data());
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
