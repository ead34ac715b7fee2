#include "dsp/MadeOnce.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace emeg {
namespace {

TEST(MadeOnce, IsEmptyUntilItIsAskedFor) {
  MadeOnce<int> place;
  EXPECT_EQ(place.find(), nullptr);
  EXPECT_EQ(place.get([] { return std::make_unique<const int>(7); }), 7);
  ASSERT_NE(place.find(), nullptr);
  EXPECT_EQ(*place.find(), 7);
}

TEST(MadeOnce, KeepsTheFirstObject) {
  MadeOnce<int> place;
  const int& first = place.get([] { return std::make_unique<const int>(7); });
  EXPECT_EQ(&place.get([] { return std::make_unique<const int>(8); }), &first);
  EXPECT_EQ(first, 7);
}

TEST(MadeOnce, TriesAgainAfterAFailure) {
  MadeOnce<int> place;
  const auto fail = []() -> std::unique_ptr<const int> { throw std::runtime_error("no memory"); };
  EXPECT_THROW(place.get(fail), std::runtime_error);
  EXPECT_EQ(place.find(), nullptr);
  EXPECT_EQ(place.get([] { return std::make_unique<const int>(9); }), 9);
}

TEST(MadeOnce, ManyThreadsGetTheSameObjectMadeByOneOfThem) {
  MadeOnce<std::vector<int>> place;
  std::atomic<int> made = 0;
  std::atomic<bool> go = false;
  std::vector<const std::vector<int>*> got(8);
  std::vector<std::thread> threads;
  for (const std::vector<int>*& result : got)
    threads.emplace_back([&] {
      while (!go) std::this_thread::yield();
      result = &place.get([&] {
        ++made;
        return std::make_unique<const std::vector<int>>(1000, 3);
      });
    });
  go = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(made, 1);
  for (const std::vector<int>* result : got) EXPECT_EQ(result, place.find());
  EXPECT_EQ(place.find()->back(), 3);
}

} // namespace
} // namespace emeg
