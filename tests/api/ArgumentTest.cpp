#include "Engine.h"

#include <type_traits>
#include <utility>

namespace ql::test {
namespace {

// What an argument by reference accepts.
template <class T, class From>
constexpr bool accepts = std::is_convertible_v<From, ByRef<T>>;
static_assert(accepts<std::int32_t, std::int32_t&>, "a variable");
static_assert(accepts<std::int32_t, int>, "a literal");
static_assert(accepts<std::int32_t, const std::int32_t&>, "a constant");
static_assert(accepts<std::int32_t, short>, "a temporary of another number type");
static_assert(accepts<std::int32_t, CONST_QL_COLORKEY>, "an enumerator");
static_assert(!accepts<std::int32_t, short&>, "a variable that nothing could be written to");
static_assert(!accepts<std::int32_t, double&>);
static_assert(accepts<std::string, const char (&)[4]>, "a string literal");
static_assert(accepts<std::string, const std::string&>);
static_assert(!std::is_copy_constructible_v<ByRef<std::int32_t>>);

// A boolean is never made from a string.
static_assert(std::is_convertible_v<bool, Boolean> && std::is_convertible_v<int, Boolean>);
static_assert(!std::is_convertible_v<const char*, Boolean> && !std::is_constructible_v<Boolean, std::string>);
static_assert(True.Value() == -1 && False.Value() == 0 && Boolean(0.5).Value() == -1);

static_assert(!std::is_convertible_v<Texture8, bool>, "a handle is tested, never converted");

TEST(ByRef, WritesBackToVariablesOnly) {
  const auto add = [](ByRef<std::int32_t> number, ByRef<std::string> text) {
    *number += 1;
    text->append("!");
    return *number;
  };
  std::int32_t number = 41;
  std::string text = "a";
  const std::int32_t constant = 1;
  const std::string fixed = "b";
  EXPECT_EQ(add(number, text), 42);
  EXPECT_EQ(number, 42);
  EXPECT_EQ(text, "a!");
  EXPECT_EQ(add(constant, fixed), 2);
  EXPECT_EQ(add(7, "literal"), 8);
  EXPECT_EQ(constant, 1);
  EXPECT_EQ(fixed, "b");
}

class Arguments : public EngineTest {};

TEST_F(Arguments, LoadingWritesBackTheSizeInUseAndClearsTheKey) {
  start();
  engine.Clear();
  engine.RenderToScreen();
  engine.ScreenShot("shot.bmp");  // 64 x 48
  std::string name = "shot.bmp";
  std::int32_t width = -1, height = -1, key = QL_COLORKEY_BLACK;
  TextureFactory8 factory;
  Texture8 texture = factory.LoadTexture(name, "shot", width, height, key);
  EXPECT_GT(width, 0);
  EXPECT_GT(height, 0);
  EXPECT_EQ(key, 0);
  EXPECT_EQ(Globals8().GetTex("SHOT"), texture);
  EXPECT_EQ(internals.GetTexture(texture).Width(), width);
  factory.DeleteTexture(texture);
  EXPECT_FALSE(texture);
  EXPECT_FALSE(Globals8().GetTex("shot"));
}

TEST_F(Arguments, SearchDirectoryGetsItsSeparator) {
  std::filesystem::create_directories("Data/Maps");
  std::string path = "data\\maps";
  engine.SetSearchDirectory(path);
  EXPECT_EQ(path, "data\\maps\\");
  EXPECT_EQ(std::filesystem::current_path().filename(), "Maps");
}

TEST_F(Arguments, VideoModeIsWrittenToTheCallersVariables) {
  std::int32_t width = -1, height = -1, format = -1;
  engine.GetVideoMode(width, height, format);
  EXPECT_EQ(width + height + format, 0) << "before a device exists";
  start(80, 60);
  engine.GetVideoMode(width, height, format);
  EXPECT_EQ(width, 80);
  EXPECT_EQ(height, 60);
  EXPECT_EQ(format, 21);
}

TEST_F(Arguments, PickRayReachesFromTheNearToTheFarPlane) {
  start(64, 48);
  Camera8().SetCamera(0, 0, 0, 0, 0, 1);
  Vec3 origin, far;
  Globals8().MousePickVector(32, 24, origin, far);
  EXPECT_NEAR(origin.z, 1, 1e-3);
  EXPECT_NEAR(far.z, 4096, 4);
  EXPECT_NEAR(far.x, 0, 1);
  Globals8().MousePickVector(64, 0, origin, far);
  EXPECT_GT(origin.x, 0) << "the right edge is to the right";
  EXPECT_GT(origin.y, 0) << "the top edge is above";
}

}  // namespace
}  // namespace ql::test
