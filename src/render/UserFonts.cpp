#include "render/UserFonts.h"

#include "platform/host/Files.h"

#include <algorithm>
#include <vector>

namespace ql::render {
namespace {

constexpr std::size_t kMostFonts = 32767;

/// The lists of all screens, the oldest first; each list keeps this one, since it may go after the context's.
struct UserFontLists {
  std::shared_ptr<std::vector<const UserFonts*>> lists = std::make_shared<std::vector<const UserFonts*>>();
};

}  // namespace

UserFonts::UserFonts(engine::EngineContext& context) : context_(context), lists_(context.get<UserFontLists>().lists) {
  lists_->push_back(this);
}

UserFonts::~UserFonts() { std::erase(*lists_, this); }

void UserFonts::create(const std::string& name, const fonts::FontRequest& request) {
  if (fonts_.size() >= kMostFonts) throw engine::EngineError(engine::kOverflow, "Overflow");
  auto font = std::make_unique<utility::Font>(context_.requireDevice(), request);
  const std::size_t number = fonts_.size() + 1;
  fonts_.push_back({name.empty() ? "UserFont" + std::to_string(number) : name, std::move(font)});
}

utility::Font* UserFonts::find(std::string_view name) const {
  const auto found =
      std::ranges::find_if(fonts_, [&](const Named& font) { return host::equalIgnoringCase(font.name, name); });
  return found == fonts_.end() ? nullptr : found->font.get();
}

std::optional<fonts::FontRequest> findUserFont(engine::EngineContext& context, std::string_view name) {
  for (const UserFonts* list : *context.get<UserFontLists>().lists)
    if (const utility::Font* font = list->find(name)) return font->request();
  return {};
}

}  // namespace ql::render
