// Recording a host's session through the public classes.
#include "Engine.h"
#include "platform/recording/Replayer.h"
#include "platform/software/SoftwareBackEnd.h"
#include "support/TinyQ3Level.h"

#include <vector>

namespace ql::test {
namespace {

using Pictures = std::vector<std::vector<std::uint32_t>>;

Pictures replayed(const std::string& file) {
  const recording::Trace trace = recording::Trace::open(file);
  EXPECT_TRUE(trace.complete());
  recording::Replayer replayer(trace, device::DeviceType::Reference, [](const device::PresentParameters&) {
    return std::shared_ptr<device::BackEnd>(software::createBackEnd());
  });
  Pictures pictures;
  while (replayer.nextFrame()) pictures.push_back(replayer.picture().pixels);
  EXPECT_EQ(replayer.counts().refused, 0u);
  return pictures;
}

class TracedEngine : public EngineTest {
 protected:
  void load() {
    const std::vector<std::byte> bytes = TinyQ3Level().bytes();
    put("maps/room.bsp", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    engine.Console(False);  // its pictures would be the trace's, too
    level.Load("maps/room.bsp");
  }
  /// Draws the level with text over it; what the host reads of it.
  std::vector<std::uint32_t> frame(float eyeX) {
    *time += 16;
    camera.SetCamera(eyeX, 60, 0, -64, 20, 0);
    engine.Clear();
    level.Render();
    scene.DrawText("Frame", 2, 4, QL_COLORKEY_WHITE);
    engine.RenderToScreen();
    return internals.GetBackbuffer().ReadPixels();
  }
  Scene8 scene;
  Camera8 camera;
  BSPTree8 level;
};

TEST_F(TracedEngine, IsDrawnAgainToTheSameBits) {
  ASSERT_TRUE(internals.StartTrace("early.qltrace"));
  start();
  load();
  Pictures pictures;
  pictures.push_back(frame(64));
  pictures.push_back(frame(60));
  // A new trace ends the one before. It starts with what the device has.
  ASSERT_TRUE(internals.StartTrace("late.qltrace"));
  pictures.push_back(frame(56));
  EXPECT_TRUE(internals.StopTrace());
  EXPECT_FALSE(internals.StopTrace());
  frame(52);
  EXPECT_NE(pictures[0], pictures[1]);
  EXPECT_EQ(replayed("early.qltrace"), (Pictures{pictures[0], pictures[1]}));
  EXPECT_EQ(replayed("late.qltrace"), Pictures{pictures[2]});
}

TEST_F(TracedEngine, FinishesItsTraceWhenItEnds) {
  start();
  load();
  ASSERT_TRUE(internals.StartTrace("engine.qltrace"));
  const std::vector<std::uint32_t> picture = frame(64);
  Quasarlens8 next;  // ends the one before
  EXPECT_EQ(replayed("engine.qltrace"), Pictures{picture});
  EXPECT_EQ(errorOf([&] { internals.StartTrace("b.qltrace"); }), 91);
}

TEST_F(TracedEngine, GoesOnWhenTheTraceCannotBeWritten) {
  start();
  EXPECT_FALSE(internals.StartTrace("none/a.qltrace"));
  EXPECT_NE(engineLog().find("TRACE : Error during creating : none/a.qltrace"), std::string::npos);
  engine.Clear();
  engine.RenderToScreen();
}

}  // namespace
}  // namespace ql::test
