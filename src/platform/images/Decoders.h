/// @file
/// The decoders behind Image.h, one pair of functions per format: what the header says, and the pixels.
#pragma once

#include "platform/host/ByteReader.h"
#include "platform/images/Image.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ql::images {

ImageInfo inspectBmp(const host::ByteReader& file);
Image decodeBmp(const host::ByteReader& file);

ImageInfo inspectTga(const host::ByteReader& file);
Image decodeTga(const host::ByteReader& file);
/// TGA files have no identifier; newer ones end in a signature, which counts when the name does not say .tga.
bool endsAsTga(const host::ByteReader& file);

ImageInfo inspectDds(const host::ByteReader& file);
/// The largest levels, at most maxLevels of those that the file holds completely.
std::vector<Image> decodeDds(const host::ByteReader& file, std::uint32_t maxLevels);

ImageInfo inspectJpg(const host::ByteReader& file);
Image decodeJpg(const host::ByteReader& file);

ImageInfo inspectPng(const host::ByteReader& file);
Image decodePng(const host::ByteReader& file);

}  // namespace ql::images
