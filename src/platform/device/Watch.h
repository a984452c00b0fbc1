/// @file
/// Who watches a device, and what there is to tell to one who comes late. For this folder's own sources only.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/device/CallNote.h"

#include <map>
#include <string_view>

namespace ql::device {

class Texture;
class VertexBuffer;

/// Shared by a device and its resources, which may outlive it: then nobody watches them any more.
struct Watch {
  /// A target that was made beside the back buffer.
  struct Target {
    TextureId texture = TextureId::None;  ///< none: colours of its own
    std::uint32_t level = 0;
    std::uint32_t width = 0, height = 0;
    Format format = Format::Unknown;
  };

  CallSink* sink = nullptr;
  // What lives; identifiers grow, so this is the order in which it was made.
  std::map<TextureId, const Texture*> textures;
  std::map<BufferId, const VertexBuffer*> buffers;
  std::map<TargetId, Target> targets;

  template <class... Values>
  void effect(std::string_view name, const Values&... given) const {
    noteEffect(sink, name, given...);
  }
};

void tellTexture(CallSink* sink, TextureId id, const TextureDescription& description);
void tellTarget(CallSink* sink, TargetId id, const Watch::Target& target);

}  // namespace ql::device
