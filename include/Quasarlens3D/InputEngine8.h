/// @file
/// Keyboard and mouse.
#ifndef QUASARLENS3D_INPUTENGINE8_H
#define QUASARLENS3D_INPUTENGINE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/GameControllers8.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/InternalObjects8.h>
#include <Quasarlens3D/MouseCursor8.h>
#include <Quasarlens3D/MouseCursors8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct InputEngineObject;
}

/// Keys by their place on the keyboard, whatever is printed on them. IsKeyPressed takes any code from 0 to 255; those
/// of keys without a name here are Tab 15, semicolon 39, period 52, slash 53, right shift 54, Num Lock 69, Scroll Lock
/// 70, Print Screen 183, right Windows key 220.
enum CONST_QL8_KEY : std::int32_t {
  QL_KEY_ESCAPE = 1,
  QL_KEY_1 = 2,
  QL_KEY_2 = 3,
  QL_KEY_3 = 4,
  QL_KEY_4 = 5,
  QL_KEY_5 = 6,
  QL_KEY_6 = 7,
  QL_KEY_7 = 8,
  QL_KEY_8 = 9,
  QL_KEY_9 = 10,
  QL_KEY_0 = 11,
  QL_KEY_MINUS = 12,
  QL_KEY_EQUALS = 13,
  QL_KEY_BACKSPACE = 14,
  QL_KEY_Q = 16,
  QL_KEY_W = 17,
  QL_KEY_E = 18,
  QL_KEY_R = 19,
  QL_KEY_T = 20,
  QL_KEY_Y = 21,
  QL_KEY_U = 22,
  QL_KEY_I = 23,
  QL_KEY_O = 24,
  QL_KEY_P = 25,
  QL_KEY_LEFTBRACKET = 26,
  QL_KEY_RIGHTBRACKET = 27,
  QL_KEY_RETURN = 28,
  QL_KEY_LEFTCONTROL = 29,
  QL_KEY_A = 30,
  QL_KEY_S = 31,
  QL_KEY_D = 32,
  QL_KEY_F = 33,
  QL_KEY_G = 34,
  QL_KEY_H = 35,
  QL_KEY_J = 36,
  QL_KEY_K = 37,
  QL_KEY_L = 38,
  QL_KEY_APOSTROPHE = 40,
  QL_KEY_GRAVE = 41,
  QL_KEY_LEFTSHIFT = 42,
  QL_KEY_BACKSLASH = 43,
  QL_KEY_Z = 44,
  QL_KEY_X = 45,
  QL_KEY_C = 46,
  QL_KEY_V = 47,
  QL_KEY_B = 48,
  QL_KEY_N = 49,
  QL_KEY_M = 50,
  QL_KEY_COMMA = 51,
  QL_KEY_MULTIPLY = 55,
  QL_KEY_ALT_LEFT = 56,
  QL_KEY_LEFTMENU = 56,
  QL_KEY_SPACE = 57,
  QL_KEY_CAPITAL = 58,
  QL_KEY_F1 = 59,
  QL_KEY_F2 = 60,
  QL_KEY_F3 = 61,
  QL_KEY_F4 = 62,
  QL_KEY_F5 = 63,
  QL_KEY_F6 = 64,
  QL_KEY_F7 = 65,
  QL_KEY_F8 = 66,
  QL_KEY_F9 = 67,
  QL_KEY_F10 = 68,
  QL_KEY_NUMPAD7 = 71,
  QL_KEY_NUMPAD8 = 72,
  QL_KEY_NUMPAD9 = 73,
  QL_KEY_SUBTRACT = 74,
  QL_KEY_NUMPAD4 = 75,
  QL_KEY_NUMPAD5 = 76,
  QL_KEY_NUMPAD6 = 77,
  QL_KEY_ADD = 78,
  QL_KEY_NUMPAD1 = 79,
  QL_KEY_NUMPAD2 = 80,
  QL_KEY_NUMPAD3 = 81,
  QL_KEY_NUMPAD0 = 82,
  QL_KEY_DECIMAL = 83,
  QL_KEY_F11 = 87,
  QL_KEY_F12 = 88,
  QL_KEY_CONVERT = 121,
  QL_KEY_NOCONVERT = 123,
  QL_KEY_NUMPADEQUALS = 141,
  QL_KEY_CIRCUMFLEX = 144,
  QL_KEY_AT = 145,
  QL_KEY_COLON = 146,
  QL_KEY_NUMPADENTER = 156,
  QL_KEY_RCONTROL = 157,
  QL_KEY_DIVIDE = 181,
  QL_KEY_ALT_RIGHT = 184,
  QL_KEY_RIGHTMENU = 184,
  QL_KEY_PAUSE = 197,
  QL_KEY_HOME = 199,
  QL_KEY_UP = 200,
  QL_KEY_PAGEUP = 201,
  QL_KEY_LEFT = 203,
  QL_KEY_RIGHT = 205,
  QL_KEY_END = 207,
  QL_KEY_DOWN = 208,
  QL_KEY_NEXT = 209,
  QL_KEY_PAGEDOWN = 209,
  QL_KEY_INSERT = 210,
  QL_KEY_DELETE = 211,
  QL_KEY_LEFTWINDOWS = 219,
  QL_KEY_APPS = 221
};

/// Keyboard, mouse and game controllers. Create it after Quasarlens8.Initialize. Their state is sampled at the end of
/// every Quasarlens8.RenderToScreen, so that it does not change while a frame is drawn. A key or button that was
/// pressed and let go between two samples counts as pressed in the next one; when the window loses the focus
/// everything is let go.
///
/// Full screen the mouse belongs to the engine while the window has the focus: the system's pointer disappears and
/// motion does not end at the edges of the screen. In a window mouse and keyboard are shared with other programs.
///
/// A second input engine takes over from the one before it.
class QUASARLENS3D_API InputEngine8 : public Detail::Handle<Detail::InputEngineObject> {
 public:
  /// Takes hold of keyboard and mouse; logged. Before Quasarlens8.Initialize a message box tells so, and nothing is
  /// ever pressed.
  InputEngine8();
  InputEngine8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// @param Key CONST_QL8_KEY or any other scan code @throws Error 9 outside 0 to 255
  Boolean IsKeyPressed(std::int32_t Key) const;
  /// What the mouse did since the sample before.
  /// @param mx,my pixels; right and down are positive @param b1,b2,b3 left, right and middle button: 128 when pressed,
  /// else 0 @param IntelliMouseRoll running total of the wheel, 120 a notch away from the user
  void GetMouseState(ByRef<std::int32_t> mx, ByRef<std::int32_t> my, ByRef<std::int16_t> b1 = 0,
                     ByRef<std::int16_t> b2 = 0, ByRef<std::int16_t> b3 = 0,
                     ByRef<std::int32_t> IntelliMouseRoll = 0) const;
  /// The pointer's place: it starts at (0, 0), moves with the mouse and stays within the back buffer; at an edge it
  /// moves back as soon as the mouse does. @param mx,my pixels @param b1,b2 as GetMouseState
  void GetAbsMouseState(ByRef<std::int32_t> mx, ByRef<std::int32_t> my, ByRef<std::int16_t> b1 = 0,
                        ByRef<std::int16_t> b2 = 0) const;
  /// Moves the pointer that GetAbsMouseState tells; the system's own stays where it is.
  void SetMousePosition(std::int32_t x, std::int32_t y);
  /// A value for the host's own use, 1 after creation: no motion is scaled by it.
  std::int32_t MouseSensitivity() const;
  void MouseSensitivity(std::int32_t Sens);
  /// MouseSensitivity, rounded to the nearest whole number (halves to even). @throws Error 6 beyond its range
  void SetMouseSensitivity(float Sens);

  /// Takes the devices anew, shared with other programs from now on. A device that is not asked for stays let go:
  /// nothing on it is pressed and it does not move. The mouse starts at (0, 0) again.
  void ReAcquire(Boolean bKeyboard = True, Boolean bMouse = False);
  /// Lets keyboard and mouse go until ReAcquire.
  void UnloadDevices();
  /// Opens the desktop's settings of mouse and keyboard; a line in the log when there are none.
  /// @param hwnd the window that they belong to; no effect
  void ShowControlPanel(std::intptr_t hwnd);
  /// Whether there is a mouse: a display has one.
  Boolean IsMouseConnected() const;

  /// The game controllers; nothing when the creation failed.
  GameControllers8 GameControllers() const;
  /// The host's list of cursors; nothing when the creation failed.
  MouseCursors8 MouseCursors() const;
  /// The picture of the current cursor; nothing before SetMouseCursor.
  SurfaceObject MouseCursor() const;
  /// Makes a cursor the current one. Scene8.LoadCursor is what draws one. @throws Error 91 for nothing
  void SetMouseCursor(const MouseCursor8& CurrentMouseCursor);
  /// True; nothing is loaded.
  Boolean CreateMouseCursorFromFile(const std::string& file);
  /// Nothing.
  void RenderMouse();

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
