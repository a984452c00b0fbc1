#include "platform/utility/Shapes.h"

#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace ql::utility {

std::int64_t sphereVertexCount(std::int32_t slices, std::int32_t stacks) {
  // A column of its own where the texture's edges meet, and a corner per slice at each pole.
  return (std::int64_t{slices} + 1) * (std::int64_t{stacks} - 1) + 2 * std::int64_t{slices};
}

std::shared_ptr<SubsetMesh> createSphere(float radius, std::int32_t slices, std::int32_t stacks) {
  if (!(radius >= 0 && std::isfinite(radius)) || slices < 2 || stacks < 2)
    throw device::DeviceError(device::kErrorInvalidCall, "sphere: a radius below 0, or fewer than 2 slices or stacks");
  std::vector<SubsetVertex> vertices;
  vertices.reserve(static_cast<std::size_t>(sphereVertexCount(slices, stacks)));
  std::vector<std::uint32_t> indices;
  const auto add = [&](double around, std::int32_t stack) {
    // The last column stands exactly where the first one does.
    const double turn = around == slices ? 0 : 2 * std::numbers::pi * around / slices,
                 fall = std::numbers::pi * stack / stacks;
    const double ring = stack == 0 || stack == stacks ? 0 : std::sin(fall);
    const math::Vec3 normal{static_cast<float>(ring * std::sin(turn)), static_cast<float>(std::cos(fall)),
                            static_cast<float>(-ring * std::cos(turn))};
    vertices.push_back({math::scale(normal, radius), normal, static_cast<float>(around / slices),
                        static_cast<float>(static_cast<double>(stack) / stacks)});
    return static_cast<std::uint32_t>(vertices.size() - 1);
  };
  const auto triangle = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    indices.insert(indices.end(), {a, b, c});
  };

  std::uint32_t above = 0;  // first vertex of the ring above
  for (std::int32_t stack = 1; stack < stacks; ++stack) {
    const auto ring = static_cast<std::uint32_t>(vertices.size());
    for (std::int32_t slice = 0; slice <= slices; ++slice) add(slice, stack);
    for (std::uint32_t slice = 0; stack > 1 && slice < static_cast<std::uint32_t>(slices); ++slice) {
      triangle(above + slice, above + slice + 1, ring + slice);
      triangle(above + slice + 1, ring + slice + 1, ring + slice);
    }
    above = ring;
  }
  for (std::uint32_t slice = 0; slice < static_cast<std::uint32_t>(slices); ++slice) {
    triangle(add(slice + 0.5, 0), slice + 1, slice);
    triangle(above + slice, above + slice + 1, add(slice + 0.5, stacks));
  }
  return std::make_shared<SubsetMesh>(std::move(vertices), std::move(indices));
}

}  // namespace ql::utility
