/// @file
/// Files by the names that hosts and data files use: both separators, any letter case, an ignored drive.
#pragma once

#include "platform/host/Fault.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ql::host {

/// The existing file that a name means: `\` and `/` both separate, a leading drive ("c:") is dropped, a component that
/// does not exist as written is looked up ignoring ASCII case. Nothing when there is none (or it is a folder).
std::optional<std::filesystem::path> findFile(std::string_view name);
/// As findFile, for folders.
std::optional<std::filesystem::path> findFolder(std::string_view name);
/// Whether findFile finds a file that can be opened for reading. The empty name never exists.
bool fileExists(std::string_view name);

/// The whole file. @throws FileFault Missing, Unreadable, TooLarge (over limit bytes)
std::vector<std::byte> readFile(std::string_view name, std::uint64_t limit = std::uint64_t{1} << 31);

/// Replaces (or creates) the file through a temporary beside it and a rename, so that a failure leaves the old file as
/// it was. An existing name that differs only in case is reused. @throws FileFault FolderMissing, Unreadable
void writeFile(std::string_view name, std::span<const std::byte> bytes);
/// As writeFile, for a path of the system's own.
void replaceFile(const std::filesystem::path& path, std::span<const std::byte> bytes);

/// Where writeFile would write: the existing spelling of the path, else the path as given with native separators.
std::filesystem::path pathForWriting(std::string_view name);

/// ASCII case folding; other bytes are left alone.
std::string foldCase(std::string_view text);
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// UTF-8 for display: the text itself when it is valid UTF-8, else read as Windows-1252.
std::string toUtf8(std::string_view text);

/// The number at the start of a text, as a host's settings or an entity text have it: blanks, a sign, digits, a point
/// and an exponent, always with a point whatever the locale; 0 when there is none or when it does not fit a double.
double numberFromText(std::string_view text);

}  // namespace ql::host
