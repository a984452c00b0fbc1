#include "platform/software/Frame.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ql::software {
namespace {

constexpr std::uint32_t kJobPrimitives = 8192, kRangeVertices = 1024;
// What may wait: bytes of vertices, and lists (one per tile and job).
constexpr std::size_t kMostBytes = std::size_t{32} << 20, kMostLists = std::size_t{1} << 20;
constexpr std::size_t kTrianglesAtOnce = 64;  // that a tile draws
constexpr std::size_t kMostPrimitives = std::size_t{1} << 20, kMostPipelines = std::size_t{1} << 14;

/// Whether a packet's triangles can become a part of a draw when their vertices lie behind its own.
bool like(const Draw& draw, const Pipeline* pipeline, const device::DrawPacket& packet) {
  if (draw.pipeline != pipeline || draw.type != packet.primitive || draw.stride != packet.stride) return false;
  if (packet.primitive == device::PrimitiveType::TriangleList) return draw.vertexCount == std::size_t{draw.count} * 3;
  return draw.pieceCount == packet.primitiveCount && draw.pieceVertices == packet.vertexCount;
}

}  // namespace

bool Frame::full(const Target& target) const {
  const auto tiles = static_cast<std::size_t>(target.tilesX() * target.tilesY());
  return pipelineCount_ > kMostPipelines || copiedBytes_ + recordFloats_ * sizeof(float) > kMostBytes ||
         primitives_ > kMostPrimitives || (primitives_ / kJobPrimitives + 1) * tiles > std::max(kMostLists, tiles * 2);
}

Pipeline& Frame::addPipeline() {
  if (pipelineCount_ == pipelines_.size()) pipelines_.emplace_back();
  return pipelines_[pipelineCount_++];
}

void Frame::draw(const Pipeline* pipeline, const device::DrawPacket& packet, const Bytes& buffer) {
  const bool triangles = packet.primitive >= device::PrimitiveType::TriangleList;
  const bool joins = !draws_.empty() && triangles && like(draws_.back(), pipeline, packet);
  const std::byte* const source = sourceOf(packet, buffer, joins ? draws_.back().end() : nullptr);
  if (joins && source == draws_.back().end()) {
    draws_.back().count += packet.primitiveCount;
    draws_.back().vertexCount += packet.vertexCount;
  } else {
    draws_.push_back({.pipeline = pipeline,
                      .type = packet.primitive,
                      .first = primitives_,
                      .count = packet.primitiveCount,
                      .vertexCount = packet.vertexCount,
                      .pieceCount = packet.primitiveCount,
                      .pieceVertices = packet.vertexCount,
                      .stride = packet.stride,
                      .source = source});
  }
  primitives_ += packet.primitiveCount;
  if (triangles) triangles_ += packet.primitiveCount;
  recordFloats_ += std::size_t{packet.vertexCount} * static_cast<std::size_t>(pipeline->attributes.recordFloats());
}

const std::byte* Frame::sourceOf(const device::DrawPacket& packet, const Bytes& buffer, const std::byte* behind) {
  if (buffer) {
    if (buffers_.empty() || buffers_.back() != buffer) buffers_.push_back(buffer);
    return buffer->data() + std::size_t{packet.firstVertex} * packet.stride;
  }
  const std::size_t bytes = std::min(packet.vertices.size(), std::size_t{packet.vertexCount} * packet.stride);
  std::byte* copy = behind ? copies_.extend(behind, bytes) : nullptr;
  if (!copy) copy = copies_.allocate(bytes);
  std::memcpy(copy, packet.vertices.data(), bytes);
  copiedBytes_ += bytes;
  return copy;
}

void Frame::clear(Clear clear) {
  clear.first = primitives_;
  clears_.push_back(clear);
}

Box Frame::tileArea(const Target& target, std::int32_t index) {
  const std::int32_t x = index % target.tilesX() * kTileSide, y = index / target.tilesX() * kTileSide;
  return intersect({x, y, x + kTileSide, y + kTileSide}, {0, 0, target.width(), target.height()});
}

void Frame::copy(Target& target, TextureCopy& copy) {
  const Target::Rows rows = target.beginWrite();
  crew_.pool.run(static_cast<std::uint32_t>(target.tilesX() * target.tilesY()),
                 [&](std::uint32_t index, unsigned worker) {
                   crew_.meter.time(worker, device::WorkStep::Tiles,
                                    [&] { copy.copyTile(rows, tileArea(target, static_cast<std::int32_t>(index))); });
                 });
  copy.finish();
}

void Frame::prepare(const Target& target) {
  transform();
  binAll(target);
}

void Frame::drawTiles(Target& target, const Target::Rows& rows, const Box& area) {
  crew_.pool.run(tiles(target), [&](std::uint32_t index, unsigned worker) {
    const auto tile = static_cast<std::int32_t>(index);
    if (!intersect(tileArea(target, tile), area).empty()) drawTile(target, rows, tile, worker, nullptr);
  });
}

void Frame::drawTile(Target& target, const Target::Rows& rows, std::int32_t index, unsigned worker, TextureCopy* copy) {
  crew_.meter.time(worker, device::WorkStep::Tiles, [&] {
    drawTile(rows, target, index, *crew_.tiles[worker]);
    if (copy) copy->copyTile(rows, tileArea(target, index));
  });
}

void Frame::reset(device::Statistics& statistics) {
  count(statistics);
  draws_.clear();
  clears_.clear();
  for (std::size_t i = 0; i < pipelineCount_; ++i)
    for (Sampler& sampler : pipelines_[i].samplers) sampler.data.reset();
  pipelineCount_ = 0;
  buffers_.clear();
  copies_.reset();
  copiedBytes_ = recordFloats_ = 0;
  primitives_ = triangles_ = 0;
}

void Frame::count(device::Statistics& statistics) {
  crew_.meter.collect(statistics);
  std::uint64_t drawn = 0;
  for (std::size_t i = 0; i < jobCount_; ++i) {
    drawn += jobs_[i].drawn;
    statistics.clipped += jobs_[i].clipped;
  }
  statistics.drawn += drawn;
  statistics.culled += triangles_ - drawn;
  for (const std::unique_ptr<Tile>& tile : crew_.tiles) {
    statistics.pixels += std::exchange(tile->shaded, 0);
    statistics.tiles += std::exchange(tile->touched, 0);
  }
}

void Frame::transform() {
  if (recordCapacity_ < recordFloats_) {
    records_ = std::make_unique_for_overwrite<float[]>(recordFloats_);
    recordCapacity_ = recordFloats_;
  }
  ranges_.clear();
  std::size_t place = 0;
  for (std::size_t i = 0; i < draws_.size(); ++i) {
    Draw& draw = draws_[i];
    draw.records = records_.get() + place;
    place += std::size_t{draw.vertexCount} * static_cast<std::size_t>(draw.pipeline->attributes.recordFloats());
    if (draw.transformsLater()) continue;
    for (std::uint32_t first = 0; first < draw.vertexCount; first += kRangeVertices)
      ranges_.push_back({i, first, std::min(kRangeVertices, draw.vertexCount - first)});
  }
  if (ranges_.empty()) return;
  // Small ranges are handed out in groups of about the size of a large one.
  groups_.assign(1, 0);
  std::uint32_t grouped = 0;
  for (std::size_t i = 0; i < ranges_.size(); ++i) {
    if (grouped >= kRangeVertices) {
      groups_.push_back(i);
      grouped = 0;
    }
    grouped += ranges_[i].count;
  }
  crew_.pool.run(static_cast<std::uint32_t>(groups_.size()), [&](std::uint32_t group, unsigned worker) {
    crew_.meter.time(worker, device::WorkStep::Vertices, [&] { transformGroup(group); });
  });
}

void Frame::transformGroup(std::size_t group) {
  const std::size_t end = group + 1 < groups_.size() ? groups_[group + 1] : ranges_.size();
  for (std::size_t i = groups_[group]; i < end; ++i) {
    const Range& range = ranges_[i];
    const Draw& draw = draws_[range.draw];
    crew_.kernels.geometry.transform(*draw.pipeline, draw.vertex(range.first), draw.stride, range.count,
                                     draw.writable(range.first), nullptr);
  }
}

void Frame::binAll(const Target& target) {
  jobCount_ = (primitives_ + kJobPrimitives - 1) / kJobPrimitives;
  if (jobs_.size() < jobCount_) jobs_.resize(jobCount_);
  std::size_t draw = 0;
  for (std::size_t i = 0; i < jobCount_; ++i) {
    Job& job = jobs_[i];
    job.firstPrimitive = static_cast<std::uint32_t>(i) * kJobPrimitives;
    job.primitiveCount = std::min(kJobPrimitives, primitives_ - job.firstPrimitive);
    while (job.firstPrimitive - draws_[draw].first >= draws_[draw].count) ++draw;
    job.firstDraw = draw;
  }
  crew_.pool.run(static_cast<std::uint32_t>(jobCount_), [&](std::uint32_t i, unsigned worker) {
    crew_.meter.time(worker, device::WorkStep::Vertices, device::WorkStep::Binning, [&] {
      crew_.kernels.geometry.bin(draws_, target.tilesX(), target.tilesY(), jobs_[i]);
      return jobs_[i].vertexNanoseconds;
    });
  });
}

void Frame::drawTile(const Target::Rows& rows, Target& target, std::int32_t index, Tile& tile) {
  tile.area = tileArea(target, index);
  tile.x = tile.area.left;
  tile.y = tile.area.top;
  tile.depth = &target.depth(index);
  const auto touches = [&](const Job& job) { return !job.lists[static_cast<std::size_t>(index)].empty(); };
  const bool cleared =
      std::any_of(clears_.begin(), clears_.end(), [&](const Clear& c) { return !intersect(c.box, tile.area).empty(); });
  const auto jobsEnd = jobs_.begin() + static_cast<std::ptrdiff_t>(jobCount_);
  if (!cleared && std::none_of(jobs_.begin(), jobsEnd, touches)) return;
  ++tile.touched;
  // When the first clear takes the whole tile, nothing before it shows.
  const bool fresh = !clears_.empty() && clears_[0].color && intersect(clears_[0].box, tile.area) == tile.area;
  if (!fresh) loadColor(tile, rows);
  std::size_t draw = 0, clear = 0;
  for (std::size_t i = 0; i < jobCount_; ++i) drawJob(jobs_[i], index, tile, draw, clear);
  for (; clear < clears_.size(); ++clear) clearTile(tile, clears_[clear]);
  storeColor(tile, rows);
}

// Searched from near to far: neighbours in a tile are neighbours among the draws.
std::size_t Frame::drawOf(std::uint32_t primitive, std::size_t from) const {
  std::size_t low = from, step = 1;
  while (low + step < draws_.size() && draws_[low + step].first <= primitive) {
    low += step;
    step *= 2;
  }
  const auto end = draws_.begin() + static_cast<std::ptrdiff_t>(std::min(low + step, draws_.size()));
  const auto after = std::upper_bound(draws_.begin() + static_cast<std::ptrdiff_t>(low), end, primitive,
                                      [](std::uint32_t n, const Draw& d) { return n < d.first; });
  return static_cast<std::size_t>(after - draws_.begin()) - 1;
}

void Frame::drawJob(const Job& job, std::int32_t index, Tile& tile, std::size_t& draw, std::size_t& clear) {
  std::array<TriangleRef, kTrianglesAtOnce> waiting;
  std::size_t count = 0;
  const Pipeline* pipeline = nullptr;
  Box area;
  const auto paint = [&] {
    if (count != 0) pipeline->paint(*pipeline, std::span(waiting).first(count), area, tile);
    count = 0;
  };
  for (const std::uint32_t id : job.lists[static_cast<std::size_t>(index)]) {
    const bool made = (id & Job::kExtra) != 0;
    const Job::Extra* extra = made ? &job.extras[id & ~Job::kExtra] : nullptr;
    const std::uint32_t number = made ? extra->primitive : id;
    if (clear < clears_.size() && clears_[clear].first <= number) {
      paint();
      for (; clear < clears_.size() && clears_[clear].first <= number; ++clear) clearTile(tile, clears_[clear]);
    }
    if (number - draws_[draw].first >= draws_[draw].count) draw = drawOf(number, draw + 1);
    const Draw& current = draws_[draw];
    if (pipeline != current.pipeline || count == waiting.size()) {
      paint();
      pipeline = current.pipeline;
      area = intersect(tile.area, pipeline->scissor);
    }
    TriangleRef& ref = waiting[count++];
    if (made) {
      for (int k = 0; k < 3; ++k) ref.v[k] = job.records.data() + extra->record[k];
    } else {
      const Corners corners = current.triangle(number - current.first);
      for (int k = 0; k < 3; ++k) {
        ref.v[k] = current.record(corners.v[k]);
        __builtin_prefetch(ref.v[k]);
      }
    }
  }
  paint();
}

}  // namespace ql::software
