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
  // Four chains, which don't wait for each other.
  std::array<std::uint64_t, 4> hash{bytes.size(), 1, 2, 3};
  const auto mix = [](std::uint64_t& to, std::uint64_t word) { to = (std::rotl(to, 23) ^ word) * 0x9E3779B97F4A7C15u; };
  std::array<std::uint64_t, 4> words{};
  for (; bytes.size() >= sizeof words; bytes = bytes.subspan(sizeof words)) {
    std::memcpy(words.data(), bytes.data(), sizeof words);
    for (std::size_t i = 0; i < words.size(); ++i) mix(hash[i], words[i]);
  }
  words = {};
  std::memcpy(words.data(), bytes.data(), bytes.size());
  for (std::size_t i = 0; i < words.size(); ++i) mix(hash[i], words[i]);
  for (std::size_t i = 1; i < hash.size(); ++i) mix(hash[0], hash[i]);
  return hash[0] ^ hash[0] >> 32;
}

bool equal(std::span<const std::byte> a, std::span<const std::byte> b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

std::uint32_t Numbering::number(std::span<const std::byte> key) {
  for (std::uint32_t& recent : recent_) {
    if (recent >= size() || !equal(entries_[recent].key, key)) continue;
    std::swap(recent, recent_[0]);
    return recent_[0];
  }
  std::shift_right(recent_.begin(), recent_.end(), 1);
  return recent_[0] = find(key);
}

std::uint32_t Numbering::find(std::span<const std::byte> key) {
  const std::uint64_t hash = hashOf(key);
  if ((entries_.size() + 1) * 2 > slots_.size()) grow();
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (; slots_[slot] != kFree; slot = (slot + 1) & mask) {
    const Entry& entry = entries_[slots_[slot]];
    if (entry.hash == hash && equal(entry.key, key)) return slots_[slot];
  }
  std::byte* kept = keys_.allocate(key.size());
  std::memcpy(kept, key.data(), key.size());
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
  recent_.fill(kFree);
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
