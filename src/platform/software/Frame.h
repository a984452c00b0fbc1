/// @file
/// Draws and clears that wait for their target, and carrying them out.
#pragma once

#include "platform/software/Arena.h"
#include "platform/software/Bins.h"
#include "platform/software/Crew.h"
#include "platform/software/TextureCopy.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace ql::software {

/// Bytes of a vertex buffer, shared between the buffer and the draws that wait.
using Bytes = std::shared_ptr<const std::vector<std::byte>>;

/// Everything that waits belongs to one target. Carrying it out has three steps, each spread over all threads: vertices
/// are transformed in ranges, primitives are binned in jobs, tiles are drawn. Tiles read the jobs in order, so the
/// order of drawing never depends on the threads.
class Frame {
 public:
  explicit Frame(Crew& crew) : crew_(crew) {}

  bool empty() const { return draws_.empty() && clears_.empty(); }
  /// Whether so much waits that it should be carried out.
  bool full(const Target& target) const;

  /// A pipeline to fill and finish; it is kept until everything is carried out.
  Pipeline& addPipeline();
  /// Chooses the code for a pipeline.
  void finish(Pipeline& pipeline) const { pipeline.paint = crew_.kernels.painter(pipeline); }
  /// @param buffer keeps the vertices when they lie in a buffer; nothing: they are copied
  void draw(const Pipeline* pipeline, const device::DrawPacket& packet, const Bytes& buffer);
  /// Fills all but the number of the primitives before it.
  void clear(Clear clear);

  // Carrying everything out, in this order; meanwhile nothing is added.
  /// The first two steps.
  void prepare(const Target& target);
  /// The third for the tiles that an area touches.
  void drawTiles(Target& target, const Target::Rows& rows, const Box& area);
  /// Draws one tile on one of the threads. @param copy is made with it; null: none
  void drawTile(Target& target, const Target::Rows& rows, std::int32_t index, unsigned worker, TextureCopy* copy);
  /// Forgets what was carried out. @param statistics to add it to
  void reset(device::Statistics& statistics);

  /// Makes a copy of a target's finished picture, whatever waits for others.
  void copy(Target& target, TextureCopy& copy);

  static std::uint32_t tiles(const Target& target) {
    return static_cast<std::uint32_t>(target.tilesX() * target.tilesY());
  }
  static Box tileArea(const Target& target, std::int32_t index);

 private:
  struct Range {
    std::size_t draw = 0;
    std::uint32_t first = 0, count = 0;
  };
  /// Where a packet's vertices are kept until everything is carried out. @param behind if possible; null: anywhere
  const std::byte* sourceOf(const device::DrawPacket& packet, const Bytes& buffer, const std::byte* behind);
  void transform();
  void transformGroup(std::size_t group);
  void binAll(const Target& target);
  void drawTile(const Target::Rows& rows, Target& target, std::int32_t index, Tile& tile);
  void count(device::Statistics& statistics);
  /// The draw that a primitive belongs to. @param from not after it
  std::size_t drawOf(std::uint32_t primitive, std::size_t from) const;
  void drawJob(const Job& job, std::int32_t index, Tile& tile, std::size_t& draw, std::size_t& clear);

  Crew& crew_;
  std::deque<Pipeline> pipelines_;  ///< the first pipelineCount_ are in use
  std::size_t pipelineCount_ = 0;
  std::vector<Draw> draws_;
  std::vector<Clear> clears_;
  std::vector<Bytes> buffers_;  ///< that draws read
  Arena copies_;                ///< of vertices from memory
  std::size_t copiedBytes_ = 0, recordFloats_ = 0;
  std::uint32_t primitives_ = 0, triangles_ = 0;  ///< that wait; triangles among them
  std::unique_ptr<float[]> records_;
  std::size_t recordCapacity_ = 0;
  std::vector<Job> jobs_;
  std::size_t jobCount_ = 0;
  std::vector<Range> ranges_;        ///< of vertices
  std::vector<std::size_t> groups_;  ///< first ranges of what a thread takes at a time
};

}  // namespace ql::software
