/// @file
/// Value types shared by every class of the engine: plain data with fixed layouts, booleans and by-reference arguments.
#ifndef QUASARLENS3D_TYPES_H
#define QUASARLENS3D_TYPES_H

#include <cstdint>
#include <type_traits>
#include <utility>

// Xlib defines these names as macros.
#ifdef True
#undef True
#endif
#ifdef False
#undef False
#endif

namespace Quasarlens3D {

/// A point or direction. Left-handed space, y up, world units.
struct Vec3 {
  float x = 0, y = 0, z = 0;
  friend constexpr bool operator==(const Vec3& a, const Vec3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }
  friend constexpr bool operator!=(const Vec3& a, const Vec3& b) { return !(a == b); }
};

/// A 4 × 4 matrix, row-major. Points are row vectors multiplied on the left; the translation stands in row 4.
struct Mat4 {
  float m11 = 0, m12 = 0, m13 = 0, m14 = 0;
  float m21 = 0, m22 = 0, m23 = 0, m24 = 0;
  float m31 = 0, m32 = 0, m33 = 0, m34 = 0;
  float m41 = 0, m42 = 0, m43 = 0, m44 = 0;
};

/// A colour value, each component nominally 0 to 1.
struct Color4 {
  float r = 0, g = 0, b = 0, a = 0;
};

/// A rectangle in pixels; right and bottom are exclusive.
struct Rect {
  std::int32_t left = 0, top = 0, right = 0, bottom = 0;
};

/// Lit vertex, format code 0x1C2: position, diffuse and specular colours (packed ARGB), one texture coordinate pair.
struct LitVertex {
  float x = 0, y = 0, z = 0;
  std::int32_t diffuse = 0, specular = 0;
  float tu = 0, tv = 0;
};

/// Transformed and lit vertex, format code 0x1C4: screen position in pixels, depth 0 to 1, reciprocal of w.
struct TransformedLitVertex {
  float x = 0, y = 0, z = 0, rhw = 0;
  std::int32_t diffuse = 0, specular = 0;
  float tu = 0, tv = 0;
};

/// Normal vertex with two texture coordinate pairs, format code 0x212 (530).
struct NormalVertex {
  float x = 0, y = 0, z = 0;
  float nx = 0, ny = 0, nz = 0;
  float tu = 0, tv = 0, tu1 = 0, tv1 = 0;
};

/// Coloured vertex with two texture coordinate pairs, format code 0x2C2 (706).
struct ColorVertex {
  float x = 0, y = 0, z = 0;
  std::int32_t diffuse = 0, specular = 0;
  float tu = 0, tv = 0, tu1 = 0, tv1 = 0;
};

/// Coloured vertex with one texture coordinate pair, format code 0x142 (322).
struct ParticleVertex {
  float x = 0, y = 0, z = 0;
  std::int32_t diffuse = 0;
  float tu = 0, tv = 0;
};

static_assert(sizeof(Vec3) == 12 && sizeof(Mat4) == 64 && sizeof(Color4) == 16 && sizeof(Rect) == 16);
static_assert(sizeof(LitVertex) == 28 && sizeof(TransformedLitVertex) == 32 && sizeof(NormalVertex) == 40);
static_assert(sizeof(ColorVertex) == 36 && sizeof(ParticleVertex) == 24);

/// A 16-bit boolean: -1 is true, 0 is false. Built from arithmetic types only, so that a string never becomes "true".
class Boolean {
 public:
  constexpr Boolean() = default;
  template <class T, class = std::enable_if_t<std::is_arithmetic_v<T>>>
  constexpr Boolean(T value)
      : value_(value != T{} ? std::int16_t{-1} : std::int16_t{0}) {}  // NOLINT(google-explicit-constructor)
  constexpr operator bool() const { return value_ != 0; }             // NOLINT(google-explicit-constructor)
  /// -1 or 0.
  constexpr std::int16_t Value() const { return value_; }

 private:
  std::int16_t value_ = 0;
};
static_assert(sizeof(Boolean) == 2);

inline constexpr Boolean True{true};
inline constexpr Boolean False{false};

/// An argument passed by reference. Built from a variable of type T, what the operation assigns reaches the variable;
/// built from anything else that converts to T (a literal, a temporary, a constant) the operation works on a copy.
/// A variable of another arithmetic type is refused by the compiler, since nothing could be written back to it.
template <class T>
class ByRef {
  template <class U>
  static constexpr bool kOtherVariable =
      std::is_lvalue_reference_v<U> && !std::is_const_v<std::remove_reference_t<U>> &&
      std::is_arithmetic_v<std::remove_reference_t<U>> && std::is_arithmetic_v<T>;

 public:
  ByRef(T& variable) : target_(&variable) {}  // NOLINT(google-explicit-constructor)
  template <class U, class = std::enable_if_t<std::is_convertible_v<U, T> && !std::is_same_v<std::decay_t<U>, ByRef> &&
                                              !std::is_same_v<U, T&> && !kOtherVariable<U>>>
  ByRef(U&& value) : own_(static_cast<T>(std::forward<U>(value))), target_(&own_) {}  // NOLINT
  ByRef(const ByRef&) = delete;
  ByRef& operator=(const ByRef&) = delete;

  T& operator*() const { return *target_; }
  T* operator->() const { return target_; }

 private:
  T own_{};
  T* target_;
};

}  // namespace Quasarlens3D

#endif
