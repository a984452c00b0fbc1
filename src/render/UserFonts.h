/// @file
/// Fonts that a host makes and names.
#pragma once

#include "engine/EngineContext.h"
#include "platform/utility/Font.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ql::render {

/// The user fonts of one screen, in order of creation; the first of a name counts.
class UserFonts {
 public:
  explicit UserFonts(engine::EngineContext& context);
  UserFonts(const UserFonts&) = delete;
  UserFonts& operator=(const UserFonts&) = delete;
  ~UserFonts();

  /// @throws engine::EngineError 91 without a device, 6 beyond 32767 fonts
  void create(const std::string& name, const fonts::FontRequest& request);
  /// The font of that name, whatever the letter case; null when there is none.
  utility::Font* find(std::string_view name) const;

 private:
  struct Named {
    std::string name;
    std::unique_ptr<utility::Font> font;
  };
  engine::EngineContext& context_;
  std::shared_ptr<std::vector<const UserFonts*>> lists_;  ///< of all screens
  std::vector<Named> fonts_;
};

/// What a user font of any screen was made from; nothing when there is none of that name.
std::optional<fonts::FontRequest> findUserFont(engine::EngineContext& context, std::string_view name);

}  // namespace ql::render
