#include "platform/software/Snapshots.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

namespace ql::software {
namespace {

// Fields of 32 bits lie without gaps up to here, so that equal bytes mean equal states.
constexpr std::size_t kAlwaysRead = offsetof(device::State, material);
static_assert(std::is_trivially_copyable_v<device::State>);

template <class T>
void append(std::vector<std::byte>& key, const T& value) {
  const auto bytes = std::as_bytes(std::span(&value, 1));
  key.insert(key.end(), bytes.begin(), bytes.end());
}

std::uint64_t hashOf(std::span<const std::byte> bytes) {
  std::uint64_t hash = bytes.size();
  for (; bytes.size() >= sizeof hash; bytes = bytes.subspan(sizeof hash)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    hash = (std::rotl(hash, 23) ^ word) * 0x9E3779B97F4A7C15u;
  }
  std::uint64_t rest = 0;
  std::memcpy(&rest, bytes.data(), bytes.size());
  hash = (std::rotl(hash, 23) ^ rest) * 0x9E3779B97F4A7C15u;
  return hash ^ hash >> 32;
}

}  // namespace

const Pipeline* Snapshots::find(const device::DrawPacket& packet,
                                const std::array<const TextureData*, device::kStages>& textures, bool white) {
  const device::State& state = *packet.state;
  key_.resize(kAlwaysRead);
  std::memcpy(key_.data(), &state, kAlwaysRead);
  append(key_, packet.vertexFormat);
  append(key_, std::uint32_t{white});
  append(key_, textures);
  if (state.render.lighting != 0) {
    append(key_, state.material);
    for (std::uint32_t i = 0; i < device::kLights; ++i)
      if (state.lightEnabled[i]) append(key_, state.lights[i]);
  }
  hash_ = hashOf(key_);
  if (slots_.empty()) return nullptr;
  for (std::size_t slot = hash_ & (slots_.size() - 1); slots_[slot] != kFree; slot = (slot + 1) & (slots_.size() - 1)) {
    const Entry& entry = entries_[slots_[slot]];
    if (entry.hash == hash_ && std::ranges::equal(entry.key, key_)) return entry.pipeline;
  }
  return nullptr;
}

void Snapshots::add(const Pipeline* pipeline) {
  std::byte* kept = keys_.allocate(key_.size());
  std::ranges::copy(key_, kept);
  entries_.push_back({hash_, {kept, key_.size()}, pipeline});
  if (entries_.size() * 2 > slots_.size())
    grow();
  else
    place(static_cast<std::uint32_t>(entries_.size() - 1));
}

void Snapshots::place(std::uint32_t entry) {
  std::size_t slot = entries_[entry].hash & (slots_.size() - 1);
  while (slots_[slot] != kFree) slot = (slot + 1) & (slots_.size() - 1);
  slots_[slot] = entry;
}

void Snapshots::grow() {
  slots_.assign(std::max<std::size_t>(slots_.size() * 2, 64), kFree);
  for (std::uint32_t i = 0; i < entries_.size(); ++i) place(i);
}

void Snapshots::clear() {
  entries_.clear();
  std::ranges::fill(slots_, kFree);
  keys_.reset();
}

}  // namespace ql::software
