/// @file
/// From vertices in memory to records that triangles are set up from.
#pragma once

#include "platform/software/Pipeline.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace ql::software {

/// Why a vertex cannot be used as it is, or on which outer sides of the drawing area it lies.
namespace outcode {
inline constexpr std::uint32_t kLeft = 1, kTop = 2, kRight = 4, kBottom = 8;
inline constexpr std::uint32_t kNear = 16, kFar = 32, kBehind = 64;
inline constexpr std::uint32_t kGuardLeft = 128, kGuardTop = 256, kGuardRight = 512, kGuardBottom = 1024;
inline constexpr std::uint32_t kNotFinite = 2048;
inline constexpr std::uint32_t kClip = kNear | kFar | kBehind | kGuardLeft | kGuardTop | kGuardRight | kGuardBottom;
}  // namespace outcode

/// A vertex before the division by w. Position: x / w and y / w are pixels, z / w is the depth before the viewport's
/// range.
struct ClipVertex {
  float x = 0, y = 0, z = 0, w = 1;
  std::array<float, kMaxAttributes - 2> attributes{};  ///< as in the record, from its third on, not divided
  float pointSize = 1;
};

/// Nothing nearer to the eye's plane is drawn, whatever the projection says.
inline constexpr float kSmallestW = 1e-8f;

/// Signed distance from the plane of an outcode::kClip bit, in homogeneous units; negative outside.
float planeDistance(const Pipeline& pipeline, const ClipVertex& v, std::uint32_t bit);

/// Where vertices lie, beside their records: what culling and binning read.
inline constexpr std::size_t kPlaces = 384;
struct Places {
  alignas(64) std::int32_t x[kPlaces];
  alignas(64) std::int32_t y[kPlaces];
  alignas(64) std::uint32_t outcode[kPlaces];
};

inline std::int32_t recordX(const float* record) { return std::bit_cast<std::int32_t>(record[kRecordX]); }
inline std::int32_t recordY(const float* record) { return std::bit_cast<std::int32_t>(record[kRecordY]); }
inline std::uint32_t recordOutcode(const float* record) { return std::bit_cast<std::uint32_t>(record[kRecordOutcode]); }

}  // namespace ql::software
