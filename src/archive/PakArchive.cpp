#include "archive/PakArchive.h"

#include "platform/host/Fault.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <system_error>

namespace ql::archive {
namespace {

namespace fs = std::filesystem;
using host::Fault;
using host::FileFault;

constexpr int kOtherErrorNumber = 5;

/// The part of an archive's file name after its folders; `/` and `\` both separate.
std::string bareName(const std::string& entryName) { return entryName.substr(entryName.find_last_of("/\\") + 1); }

/// Whether a bare name stays in the current directory: not a folder of its own, no drive before it.
bool isSafe(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find(':') == std::string::npos;
}

/// Whether anything in the current directory (a file, a folder, a link to nothing) has the name, in any letter case.
bool isTaken(const std::string& name) {
  std::error_code error;
  if (fs::symlink_status(name, error).type() != fs::file_type::not_found) return true;
  return host::findFile(name) || host::findFolder(name);
}

}  // namespace

PakArchive::PakArchive(diagnostics::Log& log) : log_(log) {}

void PakArchive::open(const std::string& fileName) {
  const auto fail = [this](const char* description) {
    log_.write(std::string("PAK MANAGER : Error loading PAK files ") + description);
    file_.close();
  };
  if (isOpen()) return fail("");
  try {
    const std::optional<fs::path> path = host::findFile(fileName);
    if (!path) throw FileFault(Fault::Missing, fileName);
    file_.clear();
    file_.open(*path, std::ios::binary);
    if (!file_) throw FileFault(Fault::Unreadable, fileName);
    directory_ = readPakDirectory(file_);
    log_.write("PAK MANAGER : Pak " + fileName + " opened : " + std::to_string(directory_.fileCount) + " files listed");
  } catch (const std::exception& error) {
    fail(error.what());
  }
}

void PakArchive::close() {
  if (!isOpen()) return;
  log_.write("PAK MANAGER : Pak Closed.");
  file_.close();
}

void PakArchive::setSearchDirectory(std::string& path) {
  const bool given = !path.empty();
  if (!path.ends_with('\\')) path += '\\';
  const std::optional<fs::path> folder = given ? host::findFolder(path) : std::nullopt;
  std::error_code error;
  if (folder) fs::current_path(*folder, error);
  if (!folder || error) throw FileFault(Fault::FolderMissing, path);
}

void PakArchive::expand(std::string& name) {
  if (!isOpen()) return;
  const auto fail = [&](const char* description, int number) {
    log_.writeError("File in PAK " + name + " has occured a error. STATE : ERROR (Level 2/5) ", description, number);
  };
  try {
    log_.write("Expand " + name + " from Pak file. STATE : OK");
    if (host::fileExists(name)) return;
    const PakEntry* entry = directory_.find(name);
    if (entry == nullptr) {
      name.clear();
      log_.write("No found in PAK. STATE : ERROR (Level 2/5) ");
      return;
    }
    name = bareName(entry->name);
    if (!isSafe(name)) throw FileFault(Fault::Unreadable, name);
    name = nameForCopy(*entry, name);
    copyOut(*entry, name);
    log_.write(name + " has been expanded from Pak File. STATE : OK");
    copy_ = {name, fs::absolute(name), entry->name};
  } catch (const FileFault& fault) {
    fail(fault.what(), fault.number());
  } catch (const std::exception& error) {
    fail(error.what(), kOtherErrorNumber);
  }
}

std::string PakArchive::nameForCopy(const PakEntry& entry, const std::string& bare) const {
  // A second request for the same entry, before the first copy was removed, renews that copy.
  if (copy_.entryName == entry.name && !copy_.name.empty() && copy_.path == fs::absolute(copy_.name)) return copy_.name;
  std::string name = bare;
  const std::size_t dot = std::min(bare.rfind('.'), bare.size());
  for (int number = 1; isTaken(name); ++number) {
    name = bare.substr(0, dot);
    name.append("~").append(std::to_string(number)).append(bare.substr(dot));
  }
  return name;
}

void PakArchive::copyOut(const PakEntry& entry, const fs::path& target) {
  file_.clear();
  file_.seekg(0, std::ios::end);
  const auto length = static_cast<std::int64_t>(file_.tellg());
  if (length < 0) throw FileFault(Fault::Unreadable, "archive");
  if (entry.offset < 0 || entry.size < 0 || entry.offset > length || entry.size > length - entry.offset)
    throw FileFault(Fault::Truncated, entry.name, static_cast<std::uint32_t>(entry.offset),
                    static_cast<std::uint32_t>(entry.size), static_cast<std::uint64_t>(length));
  file_.seekg(entry.offset);

  std::error_code error;
  if (fs::absolute(target) == copy_.path) fs::remove(copy_.path, error);
  // Exclusive, so that not even a link that appeared meanwhile leads the copy elsewhere.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> copy(std::fopen(target.c_str(), "wbx"), &std::fclose);
  if (!copy) throw FileFault(Fault::Unreadable, target.string());
  std::array<char, 65536> block;
  for (std::int64_t left = entry.size; left > 0;) {
    const auto part = static_cast<std::size_t>(std::min<std::int64_t>(left, static_cast<std::int64_t>(block.size())));
    file_.read(block.data(), static_cast<std::streamsize>(part));
    if (!file_ || std::fwrite(block.data(), 1, part, copy.get()) != part) {
      fs::remove(target, error);
      throw FileFault(Fault::Unreadable, target.string());
    }
    left -= static_cast<std::int64_t>(part);
  }
  if (std::fflush(copy.get()) != 0) {
    fs::remove(target, error);
    throw FileFault(Fault::Unreadable, target.string());
  }
}

void PakArchive::deleteExpanded(const std::string& name) {
  if (name.empty() || !isOpen() || name != copy_.name) return;
  std::error_code error;
  fs::remove(copy_.path, error);
  copy_ = {};
}

}  // namespace ql::archive
