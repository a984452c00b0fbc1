/// @file
/// Timing of frames, the lines that the programs print, and the pictures that show what was timed.
#pragma once

#include "common/Cases.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace peers {

/// Milliseconds of each frame.
using Times = std::vector<double>;

template <class Work>
double milliseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Runs a frame until so many seconds have passed, five times at least; two more before that are not counted.
template <class Frame>
Times measure(double seconds, Frame frame) {
  frame();
  frame();
  Times times;
  for (double sum = 0; times.size() < 5 || sum < seconds * 1000; sum += times.back())
    times.push_back(milliseconds(frame));
  return times;
}

inline double smallest(const Times& times) { return *std::min_element(times.begin(), times.end()); }
inline double median(Times times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

/// One line of JSON on standard output.
class Line {
 public:
  Line(const std::string& peer, const std::string& name)
      : text_("{\"peer\":\"" + peer + "\",\"case\":\"" + name + "\"") {}
  Line& add(const char* key, double value) {
    char number[64];
    std::snprintf(number, sizeof number, "%.6g", value);
    text_ += std::string(",\"") + key + "\":" + number;
    return *this;
  }
  Line& add(const char* key, const std::string& value) {
    text_ += std::string(",\"") + key + "\":\"" + value + "\"";
    return *this;
  }
  Line& add(const Times& times) { return add("median_ms", median(times)).add("min_ms", smallest(times)); }
  Line& add(Size size) { return add("size", std::to_string(size.width) + "x" + std::to_string(size.height)); }
  /// The most memory that the process has held so far.
  Line& addPeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return add("peak_bytes", static_cast<double>(usage.ru_maxrss) * 1024);
  }
  void print() const {
    std::printf("%s}\n", text_.c_str());
    std::fflush(stdout);
  }

 private:
  std::string text_;
};

/// Writes a binary PPM. @param pixels rows from the top, each 0x..RRGGBB
inline void writePicture(const std::string& file, Size size, const std::vector<std::uint32_t>& pixels) {
  std::FILE* out = std::fopen(file.c_str(), "wb");
  if (out == nullptr) {
    std::fprintf(stderr, "cannot write %s\n", file.c_str());
    return;
  }
  std::fprintf(out, "P6\n%d %d\n255\n", size.width, size.height);
  for (const std::uint32_t pixel : pixels)
    for (const int shift : {16, 8, 0}) std::fputc(static_cast<int>(pixel >> shift & 255), out);
  std::fclose(out);
}

}  // namespace peers
