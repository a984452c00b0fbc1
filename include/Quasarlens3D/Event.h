/// @file
/// Events: what an object tells its host.
#ifndef QUASARLENS3D_EVENT_H
#define QUASARLENS3D_EVENT_H

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct Access;
}

/// A handler's place in an event. The handler is disconnected when this is destroyed; it may outlive the event.
class Connection {
 public:
  Connection() = default;
  Connection(Connection&& other) noexcept : disconnect_(std::exchange(other.disconnect_, nullptr)) {}
  Connection& operator=(Connection&& other) noexcept {
    if (this != &other) {
      Disconnect();
      disconnect_ = std::exchange(other.disconnect_, nullptr);
    }
    return *this;
  }
  ~Connection() { Disconnect(); }

  /// Disconnects now; a second time does nothing.
  void Disconnect() {
    if (disconnect_) std::exchange(disconnect_, nullptr)();
  }

 private:
  template <class... Args>
  friend class Event;
  explicit Connection(std::function<void()> disconnect) : disconnect_(std::move(disconnect)) {}
  std::function<void()> disconnect_;
};

/// An event of an object. Arguments that a handler may rewrite are references: Event<float&>.
template <class... Args>
class Event {
 public:
  Event() : handlers_(std::make_shared<Handlers>()) {}
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  /// Calls a handler each time the event is raised, in order of connection, until the connection is destroyed. What a
  /// handler throws reaches the host from the operation that raised the event. Handlers may connect and disconnect:
  /// one that is added while the event is raised is called from the next time on, one that is removed is not called.
  template <class Callable>
  [[nodiscard]] Connection Connect(Callable handler) {
    auto slot = std::make_shared<Handler>(std::move(handler));
    handlers_->push_back(slot);
    return Connection([list = std::weak_ptr<Handlers>(handlers_), slot = std::weak_ptr<Handler>(slot)] {
      const auto strongList = list.lock();
      const auto strongSlot = slot.lock();
      if (!strongList || !strongSlot) return;
      strongList->erase(std::remove(strongList->begin(), strongList->end(), strongSlot), strongList->end());
    });
  }

 private:
  friend struct Detail::Access;
  using Handler = std::function<void(Args...)>;
  using Handlers = std::vector<std::shared_ptr<Handler>>;

  void Raise(Args... args) {
    const std::shared_ptr<Handlers> list = handlers_;  // lives through a handler that destroys the event's object
    const Handlers snapshot = *list;
    for (const auto& handler : snapshot)
      if (std::find(list->begin(), list->end(), handler) != list->end()) (*handler)(args...);
  }

  std::shared_ptr<Handlers> handlers_;
};

}  // namespace Quasarlens3D

#endif
