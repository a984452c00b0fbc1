#include "platform/dialog/FormView.h"

#include "platform/dialog/FormText.h"

#include <algorithm>
#include <string>
#include <utility>

#include <imgui.h>

namespace ql::dialog {
namespace {

constexpr ImU32 kPaper = IM_COL32(240, 240, 240, 255), kField = IM_COL32(255, 255, 255, 255),
                kButton = IM_COL32(225, 225, 225, 255), kHovered = IM_COL32(229, 241, 251, 255),
                kPressed = IM_COL32(204, 228, 247, 255), kEdge = IM_COL32(122, 122, 122, 255),
                kAccent = IM_COL32(0, 95, 184, 255), kText = IM_COL32(16, 16, 16, 255),
                kTextOnAccent = IM_COL32(255, 255, 255, 255);
constexpr ImGuiWindowFlags kBare = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                                   ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings |
                                   ImGuiWindowFlags_NoNav;

ImVec2 topLeft(const Box& box) { return {static_cast<float>(box.x), static_cast<float>(box.y)}; }
ImVec2 extent(const Box& box) { return {static_cast<float>(box.width), static_cast<float>(box.height)}; }
ImVec2 bottomRight(const Box& box) {
  return {static_cast<float>(box.x + box.width), static_cast<float>(box.y + box.height)};
}

/// A filled rectangle in a frame; whole pixels, since smoothed edges would blur.
void drawPanel(const Box& box, ImU32 fill, ImU32 edge, int thickness) {
  ImDrawList& list = *ImGui::GetWindowDrawList();
  const auto t = static_cast<float>(thickness);
  const ImVec2 a = topLeft(box), b = bottomRight(box);
  list.AddRectFilled(a, b, edge);
  list.AddRectFilled({a.x + t, a.y + t}, {b.x - t, b.y - t}, fill);
}

/// A text in the middle of a box's height, cut off at its sides. @param align 0 left to 1 right
void drawText(const std::string& text, const Box& box, float align, float padding, ImU32 color) {
  const ImVec2 size = ImGui::CalcTextSize(text.c_str());
  const float room = static_cast<float>(box.width) - 2 * padding;
  const float x = static_cast<float>(box.x) + padding + std::max(0.0f, room - size.x) * align;
  const float y = static_cast<float>(box.y) + (static_cast<float>(box.height) - size.y) / 2;
  const ImVec2 left = topLeft(box), right = bottomRight(box);
  ImGui::PushClipRect(left, {right.x - padding, right.y}, true);
  ImGui::GetWindowDrawList()->AddText(
      {static_cast<float>(static_cast<int>(x)), static_cast<float>(static_cast<int>(y))}, color, text.c_str());
  ImGui::PopClipRect();
}

/// A place that takes clicks. @return whether the mouse is over it
bool placeButton(const char* kind, std::size_t index, const Box& box) {
  ImGui::SetCursorScreenPos(topLeft(box));
  ImGui::PushID(kind);
  ImGui::PushID(static_cast<int>(index));
  ImGui::InvisibleButton("", extent(box));
  ImGui::PopID();
  ImGui::PopID();
  return ImGui::IsItemHovered();
}
}  // namespace

FormView::FormView(const device::Form& form, FormState& state, float scale)
    : form_(form), state_(state), scale_(scale), layout_(layOut(form.content(), scale)) {
  ImGuiStyle& style = ImGui::GetStyle();
  ImGui::StyleColorsLight(&style);
  style.WindowPadding = style.ItemSpacing = {0, 0};
  style.WindowBorderSize = 0;
  style.WindowMinSize = {1, 1};
  style.ScrollbarSize = 14 * scale;
  style.ScrollbarRounding = 0;
  // The software renderer draws plain triangles best.
  style.AntiAliasedLines = style.AntiAliasedLinesUseTex = style.AntiAliasedFill = false;
}

/// The thickness of a frame, pixels; that of the focused control is double.
int FormView::edge(bool focused) const { return static_cast<int>(scale_) * (focused ? 2 : 1); }

/// Whether a press and its release both were on the last item.
bool FormView::clicked() const { return ImGui::IsItemDeactivated() && ImGui::IsItemHovered() && !onlyCloses_; }

void FormView::frame() {
  ImGui::NewFrame();
  if (ImGui::IsMouseClicked(ImGuiMouseButton_Left)) onlyCloses_ = false;
  window();
  if (const auto open = state_.openList())
    drawEntries(*open);
  else
    scrolledTo_ = -1;
  ImGui::Render();
  if (auto action = std::exchange(action_, nullptr)) action();
}

void FormView::window() {
  const device::FormContent& content = form_.content();
  ImGui::SetNextWindowPos({0, 0});
  ImGui::SetNextWindowSize({static_cast<float>(layout_.width), static_cast<float>(layout_.height)});
  ImGui::PushStyleColor(ImGuiCol_WindowBg, kPaper);
  ImGui::Begin("form", nullptr,
               kBare | ImGuiWindowFlags_NoBringToFrontOnFocus | ImGuiWindowFlags_NoScrollbar |
                   ImGuiWindowFlags_NoScrollWithMouse);
  for (std::size_t i = 0; i < content.lists.size(); ++i) drawList(i);
  drawCheckBox();
  for (std::size_t i = 0; i < content.buttons.size(); ++i) drawButton(i);
  // A press beside everything closes an open list.
  constexpr ImGuiHoveredFlags kEvenOnItems = ImGuiHoveredFlags_AllowWhenBlockedByActiveItem;
  if (state_.openList() && ImGui::IsMouseClicked(ImGuiMouseButton_Left) && ImGui::IsWindowHovered(kEvenOnItems) &&
      !action_) {
    onlyCloses_ = true;
    action_ = [this] { state_.clickBeside(); };
  }
  ImGui::End();
  ImGui::PopStyleColor();
}

void FormView::drawList(std::size_t index) {
  const device::FormContent::List& list = form_.content().lists[index];
  const Box& box = layout_.lists[index];
  drawText(shownCaption(list.label), layout_.labels[index], 0, 0, kText);
  const bool hovered = placeButton("list", index, box);
  if (ImGui::IsItemActivated()) action_ = [this, index] { state_.clickList(index); };
  const bool marked = state_.focused(index) || state_.openList() == index;
  drawPanel(box, hovered ? kHovered : kField, marked ? kAccent : kEdge, edge(marked));
  Box text = box;
  text.width -= box.height;
  if (list.selected >= 0)
    drawText(shownText(list.entries[static_cast<std::size_t>(list.selected)]), text, 0, 8 * scale_, kText);
  const float x = static_cast<float>(box.x + box.width) - static_cast<float>(box.height) / 2,
              y = static_cast<float>(box.y) + static_cast<float>(box.height) / 2, size = 4 * scale_;
  ImGui::GetWindowDrawList()->AddTriangleFilled({x - size, y - size / 2}, {x + size, y - size / 2}, {x, y + size / 2},
                                                list.entries.empty() ? kEdge : kText);
}

void FormView::drawEntries(std::size_t index) {
  const auto count = static_cast<std::int32_t>(form_.content().lists[index].entries.size());
  const Box box = layout_.entries(index, static_cast<std::size_t>(count));
  ImGui::SetNextWindowPos(topLeft(box));
  ImGui::SetNextWindowSize(extent(box));
  ImGui::PushStyleColor(ImGuiCol_WindowBg, kField);
  ImGui::PushStyleColor(ImGuiCol_Border, kAccent);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 1);
  ImGui::Begin(("entries" + std::to_string(index)).c_str(), nullptr, kBare);
  const bool follow = scrolledTo_ != state_.highlighted();
  scrolledTo_ = state_.highlighted();
  for (std::int32_t i = 0; i < count; ++i) drawEntry(i, follow);
  ImGui::End();
  ImGui::PopStyleVar();
  ImGui::PopStyleColor(2);
}

void FormView::drawEntry(std::int32_t index, bool follow) {
  const ImVec2 at = ImGui::GetCursorScreenPos();
  const Box row{static_cast<int>(at.x), static_cast<int>(at.y), static_cast<int>(ImGui::GetContentRegionAvail().x),
                layout_.rowHeight};
  ImGui::PushID(index);
  ImGui::InvisibleButton("", {std::max(1.0f, static_cast<float>(row.width)), static_cast<float>(row.height)});
  ImGui::PopID();
  if (clicked()) action_ = [this, index] { state_.clickEntry(index); };
  const ImVec2 moved = ImGui::GetIO().MouseDelta;
  if (ImGui::IsItemHovered() && (moved.x != 0 || moved.y != 0)) {
    state_.highlight(index);
    scrolledTo_ = index;  // the mouse does not scroll
  }
  const bool marked = index == state_.highlighted();
  if (marked && follow) ImGui::SetScrollHereY();
  const ImVec2 corner = bottomRight(row);
  if (marked) ImGui::GetWindowDrawList()->AddRectFilled(topLeft(row), corner, kAccent);
  const auto& list = form_.content().lists[*state_.openList()];
  drawText(shownText(list.entries[static_cast<std::size_t>(index)]), row, 0, 7 * scale_,
           marked ? kTextOnAccent : kText);
}

void FormView::drawCheckBox() {
  const device::FormContent& content = form_.content();
  const Box& box = layout_.checkBox;
  const bool hovered = placeButton("check", 0, box);
  if (clicked()) action_ = [this] { state_.clickCheckBox(); };
  const bool focused = state_.focused(state_.checkBoxControl());
  const int side = static_cast<int>(16 * scale_);
  const Box square{box.x, box.y + (box.height - side) / 2, side, side};
  drawPanel(square, content.checked ? kAccent : hovered ? kHovered : kField, focused ? kAccent : kEdge, edge(focused));
  if (content.checked) {
    const auto at = [&](float x, float y) {
      return ImVec2{static_cast<float>(square.x) + x * static_cast<float>(side),
                    static_cast<float>(square.y) + y * static_cast<float>(side)};
    };
    ImDrawList& list = *ImGui::GetWindowDrawList();
    list.AddLine(at(0.22f, 0.52f), at(0.42f, 0.72f), kTextOnAccent, 2 * scale_);
    list.AddLine(at(0.40f, 0.72f), at(0.80f, 0.28f), kTextOnAccent, 2 * scale_);
  }
  const std::string caption = shownCaption(content.checkBox);
  const int indent = side + static_cast<int>(8 * scale_);
  const Box text{box.x + indent, box.y, box.width - indent, box.height};
  drawText(caption, text, 0, 0, kText);
  if (focused) {
    const float width = ImGui::CalcTextSize(caption.c_str()).x, y = bottomRight(text).y - scale_;
    ImGui::GetWindowDrawList()->AddRectFilled({topLeft(text).x, y - scale_}, {topLeft(text).x + width, y}, kAccent);
  }
}

void FormView::drawButton(std::size_t index) {
  const device::FormContent& content = form_.content();
  const Box& box = layout_.buttons[index];
  const bool hovered = placeButton("button", index, box);
  if (clicked()) action_ = [this, index] { state_.clickButton(index); };
  const bool focused = state_.focused(state_.buttonControl(index));
  const bool marked = focused || index == content.acceptButton;
  drawPanel(box,
            ImGui::IsItemActive() ? kPressed
            : hovered             ? kHovered
                                  : kButton,
            marked ? kAccent : kEdge, edge(focused));
  drawText(shownCaption(content.buttons[index]), box, 0.5f, 4 * scale_, kText);
}

}  // namespace ql::dialog
