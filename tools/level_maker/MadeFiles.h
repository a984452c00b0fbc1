/// @file
/// Files that makers read, write and compare.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace ql::maker {

/// The whole file; nothing when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);
/// Writes beside the target and renames, so that a failure leaves the old file. Folders are made. @return whether it
/// worked
bool writeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
/// Whether a file holds exactly these bytes. Says on standard error that it differs or is missing. @param shownAs its
/// name there
bool isSame(const std::filesystem::path& path, std::span<const std::uint8_t> bytes, const std::string& shownAs);

}  // namespace ql::maker
