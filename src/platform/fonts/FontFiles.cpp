#include "platform/fonts/FontFiles.h"

#include "platform/host/Files.h"

#include <memory>

#include <fontconfig/fontconfig.h>

namespace ql::fonts {
namespace {

constexpr const char* kFallbackFamily = "DejaVu Sans";

struct Destroy {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
  void operator()(FcConfig* config) const { FcConfigDestroy(config); }
};
using Pattern = std::unique_ptr<FcPattern, Destroy>;
using Config = std::unique_ptr<FcConfig, Destroy>;

Pattern nearest(FcConfig* config, const std::string& family, const FontRequest& request) {
  Pattern wanted(FcPatternCreate());
  if (!wanted) return nullptr;
  FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  FcPatternAddInteger(wanted.get(), FC_WEIGHT, request.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  FcPatternAddInteger(wanted.get(), FC_SLANT, request.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(wanted.get(), FC_OUTLINE, FcTrue);
  FcConfigSubstitute(config, wanted.get(), FcMatchPattern);
  FcDefaultSubstitute(wanted.get());
  FcResult result = FcResultMatch;
  return Pattern(FcFontMatch(config, wanted.get(), &result));
}

bool hasFamily(FcPattern* found, const std::string& family) {
  FcChar8* name = nullptr;
  for (int i = 0; FcPatternGetString(found, FC_FAMILY, i, &name) == FcResultMatch; ++i)
    if (host::equalIgnoringCase(reinterpret_cast<const char*>(name), family)) return true;
  return false;
}

int integer(FcPattern* found, const char* property, int fallback) {
  int value = fallback;
  return FcPatternGetInteger(found, property, 0, &value) == FcResultMatch ? value : fallback;
}

}  // namespace

std::optional<FontFile> findFont(const FontRequest& request) {
  const Config config(FcConfigReference(nullptr));
  if (!config) return std::nullopt;
  const std::string family = host::toUtf8(request.face);
  Pattern found = nearest(config.get(), family, request);
  // Configurations name stand-ins for families that are not installed; this engine has one stand-in.
  if (!found || !hasFamily(found.get(), family)) found = nearest(config.get(), kFallbackFamily, request);
  FcChar8* path = nullptr;
  if (!found || FcPatternGetString(found.get(), FC_FILE, 0, &path) != FcResultMatch) return std::nullopt;
  return FontFile{.path = reinterpret_cast<const char*>(path),
                  .index = integer(found.get(), FC_INDEX, 0),
                  .bold = integer(found.get(), FC_WEIGHT, FC_WEIGHT_REGULAR) >= FC_WEIGHT_DEMIBOLD,
                  .italic = integer(found.get(), FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN};
}

}  // namespace ql::fonts
