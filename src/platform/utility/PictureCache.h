/// @file
/// Decoded pictures, kept for the next time that a file is asked for.
#pragma once

#include "platform/images/Image.h"

#include <cstdint>
#include <filesystem>
#include <future>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ql::utility {

/// The levels of a picture file, largest first.
using Picture = std::shared_ptr<const std::vector<images::Image>>;

/// Keeps decoded files by path, time and size, the latest used first, up to a number of bytes. A file that changed in
/// the last two seconds is not kept: it could change again without its time telling.
class PictureCache {
 public:
  explicit PictureCache(std::size_t limit = std::size_t{64} << 20) : limit_(limit) {}
  /// The file's levels, decoded or kept. @throws host::FileFault
  Picture load(const std::string& fileName);
  /// Tells of a file that will soon be asked for: it is decoded meanwhile, on another thread.
  void expect(const std::string& fileName);
  /// Lets go of everything: after a load of many files, most of which nobody asks for again.
  void clear();
  /// Bytes of the pixels that are kept.
  std::size_t size() const { return size_; }
  std::uint64_t hits() const { return hits_; }

 private:
  struct Entry {
    std::filesystem::path path;
    std::filesystem::file_time_type time;
    std::uintmax_t fileSize = 0;
    Picture picture;
    std::size_t bytes = 0;
  };
  Picture decode(const std::string& fileName);

  std::map<std::string, std::future<Picture>> expected_;  ///< by the names given
  std::list<Entry> entries_;                              ///< the latest used first; few, so looked through in order
  std::size_t limit_, size_ = 0;
  std::uint64_t hits_ = 0;
};

/// Reads and decodes a file. @throws host::FileFault
Picture loadPicture(const std::string& fileName);

}  // namespace ql::utility
