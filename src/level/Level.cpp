#include "level/Level.h"

#include "engine/OpenTarget.h"
#include "level/EntityText.h"
#include "level/LevelState.h"
#include "level/LoadingPanel.h"
#include "level/Queries.h"
#include "platform/host/Files.h"
#include "render/TextureTable.h"

#include <numbers>
#include <utility>

namespace ql::level {
namespace {

constexpr std::uint64_t kIdentifierSize = 4;

/// Makes the file available when an archive holds it, reads it, and removes the archive's copy again.
std::vector<std::byte> readLevelFile(engine::EngineContext& context, std::string& fileName) {
  context.pak.expand(fileName);
  struct Remover {
    archive::PakArchive& pak;
    const std::string& name;
    ~Remover() { pak.deleteExpanded(name); }
  } remover{context.pak, fileName};
  return host::readFile(fileName);
}

void loadByKind(LevelState& level, std::string& fileName, const LoadOptions& options) {
  std::vector<std::byte> file = readLevelFile(level.context, fileName);
  if (isQ3Bsp(file)) {
    level.context.log.write(" QUAKE 3 MAP .");
    loadQuake3(level, std::move(file));
    return;
  }
  if (file.size() < kIdentifierSize)
    throw host::FileFault(host::Fault::Truncated, "level identifier", 0, kIdentifierSize, file.size());
  loadHalfLife(level, std::move(file), options);
}

/// While a render surface is drawn: a list of visible faces of its own, made anew. The surface's camera has nothing to
/// do with the frame's, whose list stays as it is.
class OwnList {
 public:
  explicit OwnList(LevelState& level) : level_(level), apart_(level.context.get<engine::OpenTarget>().end != nullptr) {
    if (apart_) std::swap(level_.visible, list_);
  }
  ~OwnList() {
    if (apart_) std::swap(level_.visible, list_);
  }
  OwnList(const OwnList&) = delete;
  OwnList& operator=(const OwnList&) = delete;

 private:
  LevelState& level_;
  bool apart_;
  VisibleFaces list_;
};

}  // namespace

struct Level::Impl : LevelState {
  using LevelState::LevelState;
};

math::Mat4 levelRotation() { return math::rotationX(-std::numbers::pi_v<float> / 2); }

Level::Level(engine::EngineContext& context) : impl_(std::make_unique<Impl>(context)) {
  context.log.write("BSP Tree object initialized. STATE : OK");
  context.get<ActiveLevel>().level = this;
  context.get<engine::HitTargets>().level = this;
}

Level::~Level() {
  engine::EngineContext& context = impl_->context;
  context.log.write("BSP Tree : Desallocate Memory from textures and lightmaps. ");
  context.log.write("Desallocate texture memory. Please Wait...");
  ActiveLevel& active = context.get<ActiveLevel>();
  if (active.level == this) active.level = nullptr;
  engine::HitTargets& targets = context.get<engine::HitTargets>();
  if (targets.level == this) targets.level = nullptr;
}

void Level::load(std::string& fileName, const LoadOptions& options) {
  diagnostics::Log& log = impl_->context.log;
  showLoadingPanel(impl_->context, fileName);
  for (const char* line : {"", "------------------------------------", "  BSP Loader for Quasarlens ",
                           "------------------------------------", " Load header and lumps."})
    log.write(line);
  impl_->createMipmaps = options.createMipmaps;
  // A level's pictures are hardly asked for again: few are kept at a time, and none afterwards.
  constexpr std::size_t kKeptBytes = std::size_t{16} << 20;
  utility::PictureCache& pictures = impl_->context.get<ql::render::TextureTable>().pictures;
  utility::PictureCache others = std::exchange(pictures, utility::PictureCache(kKeptBytes));
  try {
    loadByKind(*impl_, fileName, options);
  } catch (...) {
    const engine::EngineError error = engine::currentError();
    log.write(std::string("BSP TREE : Error during loading : ") + error.what() + ' ' + std::to_string(error.number));
  }
  pictures = std::move(others);
}

void Level::openPackage(const std::string& fileName) { impl_->packages.push_back(fileName); }
void Level::closePackages() { impl_->packages.clear(); }
void Level::copyTexturesTo(const std::string& folder, bool numbered) {
  impl_->copyTexturesFolder = folder;
  impl_->copyTexturesNumbered = numbered;
}

void Level::loadShaderDirectory(const std::string& folder) { impl_->scripts.addFolder(folder); }

void Level::render() {
  impl_->context.requireDevice();
  const OwnList list(*impl_);
  if (impl_->kind == LevelKind::Quake3)
    renderQuake3(*impl_);
  else
    renderHalfLife(*impl_);
}

void Level::setParameters(bool useLightMaps, bool usePvsInfo, std::int32_t culling, bool displaySky) {
  impl_->useLightMaps = useLightMaps;
  impl_->usePvsInfo = usePvsInfo;
  impl_->culling = static_cast<std::uint32_t>(culling);
  impl_->displaySky = displaySky;
}

void Level::setPosition(float x, float y, float z) {
  impl_->levelMatrix = math::multiply(levelRotation(), math::translation(x, y, z));
}

void Level::setCurvePrecision(std::int16_t precision) { impl_->curvePrecision = precision; }

math::Vec3 Level::startPosition() const {
  std::string_view text = impl_->data.entityText;
  while (const auto entity = firstEntity(text)) {
    const auto holds = [&](std::string_view name) { return entity->block.find(name) != std::string_view::npos; };
    if (holds("info_player_start") || holds("info_player_deathmatch")) {
      const math::Vec3 origin = parseVector(entityValue(entity->block, "origin"));
      return math::transformPoint({-origin.x, origin.y, origin.z}, impl_->levelMatrix);
    }
    text = entity->rest;
  }
  return {};
}

const std::string& Level::entityText() const { return impl_->data.entityText; }

bool Level::detectCollision(const math::Vec3& start, const math::Vec3& end) {
  return rayFaces(*impl_, start, end, impl_->context.collisionPrecision).has_value();
}

engine::HitResult Level::castRay(const math::Vec3& start, const math::Vec3& end) {
  engine::HitResult result;
  result.collision = detectCollision(start, end);
  if (result.collision) result.objectId = engine::kLevelObject;
  return result;
}

float Level::altitude(const math::Vec3& point) { return level::altitude(*impl_, point); }

bool Level::detectSphereCollision(const math::Vec3& position, float radius, std::int16_t flags) {
  constexpr std::int16_t kPassSolid = 1;
  return sphereCollides(*impl_, position, radius, flags == kPassSolid);
}

engine::HitResult Level::moveSphere(const math::Vec3& from, const math::Vec3& to, float radius) {
  return level::moveSphere(*impl_, from, to, radius);
}

bool Level::lineSight(const math::Vec3& start, const math::Vec3& end, std::int32_t node) const {
  return lineOfSight(*impl_, start, end, node);
}

}  // namespace ql::level
