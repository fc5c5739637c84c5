// The random numbers of `rand`: those of the Stage if the process binds `rand` to the Stage (TOVU_RAND_OF_STAGE is 1),
// else those of the C library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>
#include <thread>

namespace {

constexpr int kDraws = 1000;

/// A generator of the C library with a state separate from `rand`.
class Reference {
  public:
    explicit Reference(unsigned seed) { initstate_r(seed, state_, sizeof state_, &data_); }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    int next() {
        int32_t value = 0;
        random_r(&data_, &value);
        return value;
    }

  private:
    alignas(8) char state_[128];
    random_data data_{};
};

/// Index of the first number of `rand` that differs from the reference; kDraws if none does.
int first_difference(Reference& reference) {
    for (int i = 0; i < kDraws; ++i)
        if (std::rand() != reference.next()) return i;
    return kDraws;
}

TEST(RandomStream, EqualsTheLibrarysFromAThousandSeeds) {
    Dl_info library{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&std::rand), &library), 0);
    EXPECT_EQ(std::string_view(library.dli_fname).find("tovu_stage") != std::string_view::npos,
              TOVU_RAND_OF_STAGE == 1);
    for (unsigned i = 0; i < 1000; ++i) {
        const unsigned seed = i < 500 ? i : i * 2654435761u;  // those of half the range and more are negative as int
        Reference reference(seed);
        std::srand(seed);
        ASSERT_EQ(first_difference(reference), kDraws) << "seed " << seed;
    }
}

#if TOVU_RAND_OF_STAGE  // the stream of the C library belongs to the process
TEST(RandomStream, IsTheThreadsOwnAndStartsAsIfSeededWithOne) {
    std::srand(5);
    std::thread([] {
        Reference first(1), seeded(6);
        EXPECT_EQ(first_difference(first), kDraws);
        std::srand(6);
        EXPECT_EQ(first_difference(seeded), kDraws);
    }).join();
    Reference untouched(5);
    EXPECT_EQ(first_difference(untouched), kDraws);
}
#endif

}  // namespace
