#include <Quasarlens3D/Quasarlens3D.h>
using namespace Quasarlens3D;

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  Quasarlens8 engine;                          // creating the object starts the log
  engine.SetEngineMode(1024, 768, 32, False);  // reference device
  if (!engine.InitCurrentVideoMode()) return 1;

  BSPTree8 level;
  level.Load(argv[1]);
  Camera8 camera;
  Vec3 start = level.GetStartPlayerPosition();
  camera.SetCamera(start.x, start.y, start.z, start.x, start.y, start.z + 1);

  engine.Clear();
  level.Render();
  engine.RenderToScreen();
  engine.ScreenShot(argv[2]);
}
