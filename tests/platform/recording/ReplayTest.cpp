// Recorded sessions, done again.
#include "Session.h"
#include "platform/host/Fault.h"
#include "platform/recording/NullBackEnd.h"
#include "platform/recording/Replayer.h"
#include "platform/recording/TraceText.h"
#include "platform/recording/TraceWriter.h"
#include "support/Golden.h"
#include "support/TemporaryFolder.h"
#include "support/TraceFile.h"

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using namespace recording;

std::vector<FramePicture> picturesOf(const Trace& trace, Replayer::Counts* counts = nullptr) {
  Replayer replayer(trace, device::DeviceType::Reference, referenceBackEnd);
  std::vector<FramePicture> pictures;
  while (replayer.nextFrame()) pictures.push_back(replayer.picture());
  if (counts) *counts = replayer.counts();
  return pictures;
}

class Replay : public testing::Test {
 protected:
  TemporaryFolder folder_;
};

TEST_F(Replay, GivesThePicturesOfTheSession) {
  std::vector<std::vector<std::uint32_t>> expected;
  {
    TraceWriter writer("session.qltrace");
    Session session(&writer);
    session.load();
    for (const std::uint32_t color : {0xFFFF0000u, 0x80FFFFFFu, 0xFF00FF00u}) {
      session.frame(color);
      expected.push_back(session.picture());
    }
    // A reset and resources that go while they are set.
    device::PresentParameters wanted = session.device->presentParameters();
    wanted.backBufferWidth = 16;
    session.device->reset(wanted);
    wanted.backBufferWidth = kSessionWidth;
    session.device->reset(wanted);
    session.device->setViewport({0, 0, kSessionWidth, kSessionHeight, 0, 1});
    session.texture = session.converted;
    session.frame(0xFF0000FF);
    expected.push_back(session.picture());
    EXPECT_THROW(session.device->setRenderState(device::RenderState{1}, 1), device::DeviceError);
  }
  const Trace trace = Trace::open("session.qltrace");
  Replayer::Counts counts;
  const std::vector<FramePicture> pictures = picturesOf(trace, &counts);
  ASSERT_EQ(pictures.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(pictures[i].pixels, expected[i]) << "frame " << i;
  EXPECT_NE(expected[0], expected[1]);
  EXPECT_EQ(counts.unknown, 0u);
  EXPECT_EQ(counts.refused, 1u) << "what the session's device refused";
}

TEST_F(Replay, OfASessionThatIsWatchedLateStartsWithAllItHas) {
  using namespace device;
  Session session;
  session.load();
  session.frame(0xFFFF0000);
  session.device->setRenderState(RenderState::ZFunc, 8);
  session.device->setRenderState(RenderState::ZFunc, 99);  // means nothing: 8 stays in force
  session.device->setTextureStageState(0, StageState::ColorOp, 4);
  session.device->setTextureStageState(1, StageState::TexCoordIndex, 0);
  session.device->setViewport({1, 2, 30, 20, 0, 1});
  {
    TraceWriter writer("late.qltrace");
    session.watch(writer);
    session.frame(0xFFFFFF00);
    session.device->setCallSink(nullptr);
  }
  session.frame(0xFF123456);
  const Trace trace = Trace::open("late.qltrace");
  Replayer replayer(trace, DeviceType::Reference, referenceBackEnd);
  ASSERT_TRUE(replayer.nextFrame());
  Session again;  // what the late session drew, from the start
  again.load();
  again.frame(0xFFFF0000);
  again.device->setRenderState(RenderState::ZFunc, 8);
  again.device->setTextureStageState(0, StageState::ColorOp, 4);
  again.device->setTextureStageState(1, StageState::TexCoordIndex, 0);
  again.device->setViewport({1, 2, 30, 20, 0, 1});
  again.frame(0xFFFFFF00);
  EXPECT_EQ(replayer.picture().pixels, again.picture());
  EXPECT_EQ(replayer.counts().refused, 0u);
  EXPECT_FALSE(replayer.nextFrame());
}

TEST_F(Replay, OfVersionOneStaysPossible) {
  const std::filesystem::path data = QL_TEST_DATA_DIR;
  if (std::getenv("QL_UPDATE_GOLDEN") != nullptr) {
    TraceWriter writer(data / "session-v1.qltrace");
    Session session(&writer);
    session.load();
    session.frame(0xFFFF8000);
    session.device->setCallSink(nullptr);
  }
  const Trace trace = Trace::open(data / "session-v1.qltrace");
  EXPECT_EQ(trace.version(), 1u);
  TraceCursor cursor(trace);
  std::string text;
  while (const TraceRecord* record = cursor.next()) text += lineOf(cursor, *record) + "\n";
  if (std::getenv("QL_UPDATE_GOLDEN") != nullptr) put(data / "session-v1.txt", text);
  EXPECT_EQ(text, contents(data / "session-v1.txt"));
  const std::vector<FramePicture> pictures = picturesOf(trace);
  ASSERT_EQ(pictures.size(), 1u);
  EXPECT_TRUE(matchesGolden({kSessionWidth, kSessionHeight, pictures[0].pixels, false}, "trace-session"));
}

/// A trace that starts with a device of 16 x 16.
std::string withDevice(const std::string& then) {
  return signature(true, "DeviceCreated", "0000") + number(1) + integer(2) + integer(16) + integer(16) + integer(22) +
         then;
}

TEST(HostileTraces, AreRefusedWithoutHarm) {
  using host::Fault;
  constexpr std::int64_t kHuge = 4096;
  std::string manyTextures = withDevice(signature(true, "TextureCreated", "000000"));
  for (std::int64_t i = 1; i <= 64; ++i)
    manyTextures += number(2) + integer(i) + integer(kHuge) + integer(kHuge) + integer(1) + integer(21) + integer(0);
  const std::string texture = signature(true, "TextureCreated", "000000");
  const std::string small = number(2) + integer(1) + integer(4) + integer(4) + integer(1) + integer(21) + integer(1);
  const struct {
    const char* name;
    std::string records;
    std::optional<Fault> fault;
    std::uint64_t refused;
  } rows[] = {
      {"a call before any device", signature(false, "BeginScene", "") + number(1), Fault::BadReference, 0},
      {"a value short", withDevice(signature(false, "SetVertexShader", "") + number(2)), Fault::Truncated, 0},
      {"a text for a number", withDevice(signature(false, "SetVertexShader", "2") + number(2) + number(0)),
       Fault::BadEncoding, 0},
      {"a number beyond 32 bits", withDevice(signature(false, "SetVertexShader", "0") + number(2) + integer(1LL << 32)),
       Fault::BadSize, 0},
      {"a negative number", withDevice(signature(false, "SetVertexShader", "0") + number(2) + integer(-1)),
       Fault::BadSize, 0},
      {"a matrix of 8 bytes",
       withDevice(signature(false, "SetTransform", "03") + number(2) + integer(2) + number(8) + "12345678"),
       Fault::BadSize, 0},
      {"rectangles and a half",
       withDevice(signature(false, "Clear", "030010") + number(2) + integer(1) + number(24) + std::string(24, '\0') +
                  integer(1) + integer(0) + std::string(4, '\0') + integer(0)),
       Fault::BadSize, 0},
      {"more textures than fit", manyTextures, Fault::TooLarge, 0},
      {"a texture made twice", withDevice(texture + small + small), Fault::BadReference, 0},
      {"a device without a size",
       signature(true, "DeviceCreated", "0000") + number(1) + integer(2) + integer(1 << 30) + integer(16) + integer(22),
       Fault::BadSize, 0},
      {"a texture that is not there",
       withDevice(signature(false, "SetTexture", "00") + number(2) + integer(0) + integer(7)), std::nullopt, 1},
      {"a target of a texture's level that is not there",
       withDevice(texture + small + signature(true, "TextureTargetCreated", "000") + number(3) + integer(9) +
                  integer(1) + integer(5)),
       std::nullopt, 1},
      {"a target destroyed while it is drawn into, its texture before",
       withDevice(texture + small + signature(true, "TextureTargetCreated", "000") + number(3) + integer(9) +
                  integer(1) + integer(0) + signature(false, "SetRenderTarget", "000") + number(4) + integer(9) +
                  integer(4000) + integer(4000) + signature(true, "TextureDestroyed", "0") + number(5) + integer(1) +
                  signature(true, "TargetDestroyed", "0") + number(6) + integer(9) +
                  signature(false, "Clear", "030010") + number(7) + integer(0) + number(0) + integer(3) + integer(0) +
                  std::string(4, '\0') + integer(0)),
       std::nullopt, 0},
      {"copies of no target and to a texture of another size",
       withDevice(texture + small + signature(true, "TargetCreated", "0000") + number(3) + integer(9) + integer(8) +
                  integer(8) + integer(22) + signature(false, "CopyTarget", "000") + number(4) + integer(5) +
                  integer(1) + integer(0) + number(4) + integer(9) + integer(1) + integer(0) + number(4) + integer(9) +
                  integer(1) + integer(7)),
       std::nullopt, 3},
      {"pixels outside the back buffer",
       withDevice(signature(true, "TargetWritten", "000003") + number(2) + integer(0) + integer(15) + integer(15) +
                  integer(2) + integer(1) + number(8) + "12345678"),
       std::nullopt, 1},
      {"too few pixels for the back buffer",
       withDevice(signature(true, "TargetWritten", "000003") + number(2) + integer(0) + integer(0) + integer(0) +
                  integer(2) + integer(2) + number(8) + "12345678"),
       Fault::BadSize, 0},
      {"a name that means nothing", withDevice(signature(false, "Frobnicate", "0") + number(2) + integer(0)),
       std::nullopt, 0},
  };
  for (const auto& row : rows) {
    const Trace trace(TraceFile().records(row.records).end().bytes());
    Replayer replayer(trace, device::DeviceType::Reference,
                      [](const device::PresentParameters&) { return std::make_shared<NullBackEnd>(); },
                      {std::uint64_t{64} << 20});
    std::optional<Fault> fault;
    try {
      while (replayer.nextFrame()) {
      }
    } catch (const host::FileFault& caught) {
      fault = caught.id;
    }
    EXPECT_EQ(fault, row.fault) << row.name;
    EXPECT_EQ(replayer.counts().refused, row.refused) << row.name;
  }
}

}  // namespace
}  // namespace ql::test
