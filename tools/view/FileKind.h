/// @file
/// What a file is.
#pragma once

#include <filesystem>
#include <string_view>

namespace view {

enum class Kind { Level, Chunks, X, ThreeDs, Dxe, Picture, Package, Archive };

/// By its first bytes, DXE files by their name; everything else is taken for a picture.
/// @throws walk::Failure Unreadable; Malformed for a QLMESH file, which gives back no more than a name
Kind kindOf(const std::filesystem::path& file);
std::string_view nameOf(Kind kind);
/// Whether it is a collection of textures, of which a sheet is shown.
inline bool isCollection(Kind kind) { return kind == Kind::Package || kind == Kind::Archive; }
inline bool isMesh(Kind kind) { return kind != Kind::Level && kind != Kind::Picture && !isCollection(kind); }

}  // namespace view
