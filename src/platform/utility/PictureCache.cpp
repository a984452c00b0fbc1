#include "platform/utility/PictureCache.h"

#include "platform/host/Files.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace ql::utility {

Picture loadPicture(const std::string& fileName) {
  return std::make_shared<const std::vector<images::Image>>(images::decodeLevels(host::readFile(fileName), fileName));
}

void PictureCache::expect(const std::string& fileName) {
  // Without another thread it is decoded when it is asked for.
  expected_.try_emplace(fileName, std::async(std::launch::async | std::launch::deferred, loadPicture, fileName));
}

Picture PictureCache::decode(const std::string& fileName) {
  const auto expected = expected_.find(fileName);
  if (expected == expected_.end()) return loadPicture(fileName);
  std::future<Picture> picture = std::move(expected->second);
  expected_.erase(expected);
  return picture.get();
}

void PictureCache::clear() {
  expected_.clear();
  entries_.clear();
  size_ = 0;
}

Picture PictureCache::load(const std::string& fileName) {
  const auto path = host::findFile(fileName);
  if (!path) return loadPicture(fileName);  // which says what is wrong
  std::error_code timeFault, sizeFault, pathFault;
  Entry wanted;
  wanted.path = std::filesystem::canonical(*path, pathFault);
  wanted.time = std::filesystem::last_write_time(*path, timeFault);
  wanted.fileSize = std::filesystem::file_size(*path, sizeFault);
  const bool known = !timeFault && !sizeFault && !pathFault;

  const auto kept = std::ranges::find(entries_, wanted.path, &Entry::path);
  if (kept != entries_.end()) {
    if (known && kept->time == wanted.time && kept->fileSize == wanted.fileSize) {
      ++hits_;
      entries_.splice(entries_.begin(), entries_, kept);
      return entries_.front().picture;
    }
    size_ -= kept->bytes;
    entries_.erase(kept);
  }

  wanted.picture = decode(fileName);
  constexpr auto kSettled = std::chrono::seconds(2);
  if (!known || std::filesystem::file_time_type::clock::now() - wanted.time < kSettled) return wanted.picture;
  for (const images::Image& level : *wanted.picture) wanted.bytes += level.pixels.size() * sizeof(std::uint32_t);
  if (wanted.bytes > limit_) return wanted.picture;
  for (; size_ + wanted.bytes > limit_; entries_.pop_back()) size_ -= entries_.back().bytes;
  size_ += wanted.bytes;
  entries_.push_front(std::move(wanted));
  return entries_.front().picture;
}

}  // namespace ql::utility
