/// @file
/// The life of SDL's video part in this process.
#pragma once

#include <memory>

namespace ql::window {

/// SDL's video part, started; it stops when the last display and window that share this are gone. A host that uses SDL
/// itself keeps what it started.
class SdlVideo {
 public:
  /// Nothing when there is no display that a user could see.
  static std::shared_ptr<SdlVideo> open();
  ~SdlVideo();
  SdlVideo(const SdlVideo&) = delete;
  SdlVideo& operator=(const SdlVideo&) = delete;

  /// Takes in what the window system has to say. Windows learn it from their event watches; the queue is emptied,
  /// unless it belongs to a host that used SDL before us.
  void pump() const;
  /// From now on pumping survives that a host destroyed its window. @param server SDL's connection to the X server
  void guard(void* server) { guarded_ = server; }
  bool hostUsesSdl() const { return hostUsesSdl_; }

 private:
  explicit SdlVideo(bool hostUsesSdl) : hostUsesSdl_(hostUsesSdl) {}
  bool hostUsesSdl_;
  void* guarded_ = nullptr;
};

}  // namespace ql::window
