#include "platform/software/Snapshots.h"

#include <algorithm>
#include <bit>
#include <cstddef>
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

std::uint32_t Numbering::number(std::span<const std::byte> key) {
  const std::uint64_t hash = hashOf(key);
  if ((entries_.size() + 1) * 2 > slots_.size()) grow();
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (; slots_[slot] != kFree; slot = (slot + 1) & mask) {
    const Entry& entry = entries_[slots_[slot]];
    if (entry.hash == hash && std::ranges::equal(entry.key, key)) return slots_[slot];
  }
  std::byte* kept = keys_.allocate(key.size());
  std::ranges::copy(key, kept);
  slots_[slot] = size();
  entries_.push_back({hash, {kept, key.size()}});
  return size() - 1;
}

void Numbering::grow() {
  slots_.assign(std::max<std::size_t>(slots_.size() * 2, 64), kFree);
  const std::size_t mask = slots_.size() - 1;
  for (std::uint32_t i = 0; i < size(); ++i) {
    std::size_t slot = entries_[i].hash & mask;
    while (slots_[slot] != kFree) slot = (slot + 1) & mask;
    slots_[slot] = i;
  }
}

void Numbering::clear() {
  entries_.clear();
  std::ranges::fill(slots_, kFree);
  keys_.reset();
}

const Pipeline*& Snapshots::find(const device::DrawPacket& packet,
                                 const std::array<const TextureData*, device::kStages>& textures, bool white) {
  const device::State& state = *packet.state;
  if (states_.size() == 0 || version_ != packet.stateVersion) {
    version_ = packet.stateVersion;
    key_.resize(kAlwaysRead);
    std::memcpy(key_.data(), &state, kAlwaysRead);
    if (state.render.lighting != 0) {
      append(key_, state.material);
      for (std::uint32_t i = 0; i < device::kLights; ++i)
        if (state.lightEnabled[i]) append(key_, state.lights[i]);
    }
    state_ = states_.number(key_);
  }
  key_.clear();
  append(key_, state_);
  append(key_, packet.vertexFormat);
  append(key_, std::uint64_t{white});
  append(key_, textures);
  const std::uint32_t kind = kinds_.number(key_);
  if (kind == pipelines_.size()) pipelines_.push_back(nullptr);
  return pipelines_[kind];
}

void Snapshots::clear() {
  states_.clear();
  kinds_.clear();
  pipelines_.clear();
}

}  // namespace ql::software
