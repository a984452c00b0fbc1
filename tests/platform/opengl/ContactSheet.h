/// @file
/// Many small pictures as one.
#pragma once

#include "platform/images/Image.h"
#include "platform/opengl/Table.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ql::test {

/// Pictures of the table's scenes in columns, each scene as one or several pictures side by side.
class ContactSheet {
 public:
  /// @param pictures of each scene @param scenes their number
  ContactSheet(std::uint32_t columns, std::uint32_t pictures, std::size_t scenes);
  void add(const std::vector<std::vector<std::uint32_t>>& pictures);
  const images::Image& image() const { return image_; }
  /// As a JPG file, with the scenes' numbers.
  std::vector<std::byte> jpg() const;

 private:
  struct Place {
    std::uint32_t x, y;
  };
  Place placeOf(std::uint32_t scene) const;
  std::uint32_t columns_, cellWidth_, count_ = 0;
  images::Image image_;
};

}  // namespace ql::test
