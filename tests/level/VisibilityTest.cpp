#include "level/Visibility.h"

#include <random>
#include <utility>

#include <gtest/gtest.h>

namespace ql::level {
namespace {

/// The same sort as plain recursion.
void recursiveSort(std::vector<VisibleFace>& faces, int low, int high) {
  const auto key = [&](int i) { return faces[static_cast<std::size_t>(i)].key; };
  const int pivot = key((low + high) / 2);
  int i = low, j = high;
  while (i <= j) {
    while (key(i) < pivot) ++i;
    while (key(j) > pivot) --j;
    if (i <= j) std::swap(faces[static_cast<std::size_t>(i++)], faces[static_cast<std::size_t>(j--)]);
  }
  if (low < j) recursiveSort(faces, low, j);
  if (i < high) recursiveSort(faces, i, high);
}

TEST(SortByKey, LeavesEqualKeysWhereTheRecursionLeavesThem) {
  std::mt19937 random(7);
  for (const int keys : {1, 3, 40, 100000}) {
    for (const int size : {1, 2, 3, 10, 1000, 40000}) {
      std::vector<VisibleFace> faces;
      for (int i = 0; i < size; ++i)
        faces.push_back({i, static_cast<std::int32_t>(random() % static_cast<unsigned>(keys)) - 1});
      std::vector<VisibleFace> expected = faces;
      recursiveSort(expected, 0, size - 1);
      sortByKey(faces);
      ASSERT_TRUE(std::equal(faces.begin(), faces.end(), expected.begin(),
                             [](auto a, auto b) { return a.face == b.face && a.key == b.key; }))
          << keys << " keys, " << size << " faces";
    }
  }
  std::vector<VisibleFace> none;
  sortByKey(none);
}

}  // namespace
}  // namespace ql::level
