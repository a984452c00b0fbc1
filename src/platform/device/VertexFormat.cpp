#include "platform/device/Device.h"

#include <cstdio>
#include <string>

namespace ql::device {

std::uint64_t vertexCount(PrimitiveType type, std::uint64_t primitiveCount) {
  if (primitiveCount == 0) return 0;
  switch (type) {
    case PrimitiveType::PointList:
      return primitiveCount;
    case PrimitiveType::LineList:
      return primitiveCount * 2;
    case PrimitiveType::LineStrip:
      return primitiveCount + 1;
    case PrimitiveType::TriangleList:
      return primitiveCount * 3;
    case PrimitiveType::TriangleStrip:
    case PrimitiveType::TriangleFan:
      return primitiveCount + 2;
  }
  throw DeviceError(kErrorInvalidCall, "no primitive type " + std::to_string(static_cast<std::uint32_t>(type)));
}

std::uint32_t vertexSize(std::uint32_t vertexFormat) {
  constexpr std::uint32_t kKnown = fvf::kXyz | fvf::kXyzRhw | fvf::kNormal | fvf::kPointSize | fvf::kDiffuse |
                                   fvf::kSpecular | fvf::kTextureCountMask;
  constexpr std::uint32_t kMaxCoordinates = 8;
  const bool transformed = (vertexFormat & fvf::kXyzRhw) != 0;
  const std::uint32_t coordinates = (vertexFormat & fvf::kTextureCountMask) >> fvf::kTextureCountShift;
  const char* fault = nullptr;
  if (vertexFormat & ~kKnown)
    fault = "unknown bits";
  else if (((vertexFormat & fvf::kXyz) != 0) == transformed)
    fault = "not exactly one kind of position";
  else if (transformed && (vertexFormat & fvf::kNormal))
    fault = "a normal on a transformed vertex";
  else if (coordinates > kMaxCoordinates)
    fault = "more than 8 texture coordinates";
  if (fault) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%X", vertexFormat);
    throw DeviceError(kErrorInvalidCall, std::string("vertex format ") + code + ": " + fault);
  }
  std::uint32_t bytes = transformed ? 16 : 12;
  if (vertexFormat & fvf::kNormal) bytes += 12;
  for (const std::uint32_t word : {fvf::kPointSize, fvf::kDiffuse, fvf::kSpecular})
    if (vertexFormat & word) bytes += 4;
  return bytes + coordinates * 8;
}

}  // namespace ql::device
