/// @file
/// The pointer of an X server, wherever it is.
#pragma once

#include <bitset>
#include <cstdint>
#include <memory>
#include <unordered_map>

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): the name is not ours

namespace ql::input {

/// What a mouse did since the last time. Windows of other clients, of a host for example, keep the pointer's events to
/// themselves; the server tells everybody who asks.
struct PointerChange {
  std::int32_t x = 0, y = 0;    ///< motion, pixels; also what the pointer cannot follow at the screen's edges
  std::int32_t wheel = 0;       ///< notches
  std::bitset<4> held, tapped;  ///< left, right, middle, first of the thumb; tapped: pressed meanwhile
};

/// A connection of its own: nothing that a host or SDL selects is touched.
class XPointer {
 public:
  /// Nothing without an X server, or when it does not tell about devices.
  static std::unique_ptr<XPointer> open();
  ~XPointer();
  XPointer(const XPointer&) = delete;
  XPointer& operator=(const XPointer&) = delete;

  PointerChange take();

 private:
  XPointer(_XDisplay* server, int extension);
  bool isRelative(int device);
  void takeEvents();

  _XDisplay* server_;
  int extension_;                           ///< opcode of the device events
  std::unordered_map<int, bool> relative_;  ///< by device: whether it reports steps, not places
  double rawX_ = 0, rawY_ = 0;              ///< steps since the last time
  PointerChange change_;
  bool known_ = false;
  int x_ = 0, y_ = 0;  ///< on the screen, the last time
};

}  // namespace ql::input
