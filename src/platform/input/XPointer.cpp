#include "platform/input/XPointer.h"

#include <cmath>
#include <cstddef>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace ql::input {
namespace {

/// X numbers: 1 left, 2 middle, 3 right, 4 and 5 the wheel, 8 the first of the thumb.
int placeOf(int button) { return button == 1 ? 0 : button == 3 ? 1 : button == 2 ? 2 : button == 8 ? 3 : -1; }

/// What the pointer could not follow: steps that go on beyond an edge that it stands at.
std::int32_t beyond(double raw, int moved, int place, int last) {
  const bool outward = (place <= 0 && raw < 0 && raw < moved) || (place >= last && raw > 0 && raw > moved);
  return outward ? static_cast<std::int32_t>(std::lround(raw)) - moved : 0;
}

}  // namespace

std::unique_ptr<XPointer> XPointer::open() {
  ::Display* server = XOpenDisplay(nullptr);
  if (server == nullptr) return nullptr;
  int extension = 0, event = 0, error = 0, major = 2, minor = 2;
  if (XQueryExtension(server, "XInputExtension", &extension, &event, &error) == 0 ||
      XIQueryVersion(server, &major, &minor) != 0) {
    XCloseDisplay(server);
    return nullptr;
  }
  return std::unique_ptr<XPointer>(new XPointer(server, extension));
}

XPointer::XPointer(::Display* server, int extension) : server_(server), extension_(extension) {
  unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
  XISetMask(bits, XI_RawMotion);
  XISetMask(bits, XI_RawButtonPress);
  XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
  XISelectEvents(server_, DefaultRootWindow(server_), &mask, 1);
  XFlush(server_);
}

XPointer::~XPointer() { XCloseDisplay(server_); }

bool XPointer::isRelative(int device) {
  const auto known = relative_.find(device);
  if (known != relative_.end()) return known->second;
  bool relative = false;
  int count = 0;
  if (XIDeviceInfo* info = XIQueryDevice(server_, device, &count)) {
    for (int i = 0; i < info->num_classes; ++i) {
      const XIAnyClassInfo* one = info->classes[i];
      if (one->type != XIValuatorClass) continue;
      const auto* axis = reinterpret_cast<const XIValuatorClassInfo*>(one);
      if (axis->number == 0) relative = axis->mode == XIModeRelative;
    }
    XIFreeDeviceInfo(info);
  }
  return relative_[device] = relative;
}

void XPointer::takeEvents() {
  constexpr int kMostDevices = 64;  // devices come and go; numbers are used again
  while (XPending(server_) > 0) {
    XEvent event;
    XNextEvent(server_, &event);
    XGenericEventCookie& cookie = event.xcookie;
    if (cookie.type != GenericEvent || cookie.extension != extension_ || XGetEventData(server_, &cookie) == 0) continue;
    const auto& raw = *static_cast<const XIRawEvent*>(cookie.data);
    if (cookie.evtype == XI_RawButtonPress) {
      if (raw.detail == 4) ++change_.wheel;
      if (raw.detail == 5) --change_.wheel;
      if (const int place = placeOf(raw.detail); place >= 0) change_.tapped.set(static_cast<std::size_t>(place));
    } else if (cookie.evtype == XI_RawMotion) {
      if (relative_.size() > kMostDevices) relative_.clear();
      if (isRelative(raw.sourceid)) {
        const double* value = raw.valuators.values;
        for (int axis = 0; axis < 2 && axis < raw.valuators.mask_len * 8; ++axis)
          if (XIMaskIsSet(raw.valuators.mask, axis)) (axis == 0 ? rawX_ : rawY_) += *value++;
      }
    }
    XFreeEventData(server_, &cookie);
  }
}

PointerChange XPointer::take() {
  takeEvents();
  ::Window root = 0, child = 0;
  int x = 0, y = 0, inWindowX = 0, inWindowY = 0;
  unsigned mask = 0;
  const int screen = DefaultScreen(server_);
  XQueryPointer(server_, RootWindow(server_, screen), &root, &child, &x, &y, &inWindowX, &inWindowY, &mask);
  PointerChange change = change_;
  change_ = {};
  if (known_) {
    change.x = x - x_;
    change.y = y - y_;
    change.x += beyond(rawX_, change.x, x, DisplayWidth(server_, screen) - 1);
    change.y += beyond(rawY_, change.y, y, DisplayHeight(server_, screen) - 1);
  }
  known_ = true;
  rawX_ = rawY_ = 0;
  x_ = x;
  y_ = y;
  change.held[0] = (mask & Button1Mask) != 0;
  change.held[1] = (mask & Button3Mask) != 0;
  change.held[2] = (mask & Button2Mask) != 0;
  return change;
}

}  // namespace ql::input
