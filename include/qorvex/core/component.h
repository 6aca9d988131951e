#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "qorvex/sql_export.h"

namespace qorvex {

enum class TOperation { opInsert, opRemove };

// Base of the library's components (providers, SQL builders, connections, the query
// builder). Components refer to each other by plain pointers; free notification keeps
// those references valid: after a.FreeNotification(&b), whichever of the two is
// destroyed first tells the other through Notification(self, opRemove), and the other
// clears its reference there.
class QORVEX_SQL_EXPORT TqxComponent {
 public:
  TqxComponent() = default;
  TqxComponent(const TqxComponent&) = delete;
  TqxComponent& operator=(const TqxComponent&) = delete;
  virtual ~TqxComponent();

  const std::string& GetName() const { return name_; }
  void SetName(std::string name) { name_ = std::move(name); }

  // Subscribes both ways; calling it again for the same pair changes nothing.
  void FreeNotification(TqxComponent* other);
  void RemoveFreeNotification(TqxComponent* other);

  // True from the start of the destructor on: a component being destroyed does not
  // rebuild state it is about to free.
  bool IsDestroying() const { return destroying_; }

 protected:
  // Called on every subscriber of `component` while `component` is being destroyed.
  virtual void Notification(TqxComponent* component, TOperation operation) {}

  // Derived destructors call this first so that IsDestroying() holds while they run
  // and subscribers are told while the derived part still exists.
  void BeginDestroy();

 private:
  static void AddSubscriber(TqxComponent& owner, TqxComponent* other);
  static void RemoveSubscriber(TqxComponent& owner, TqxComponent* other);

  std::string name_;
  // In subscription order; a long list (a table joined to many others) also keeps each
  // subscriber's position, and leaves null holes where subscribers went.
  std::vector<TqxComponent*> subscribers_;
  std::unique_ptr<std::unordered_map<TqxComponent*, std::size_t>> positions_;
  bool destroying_ = false;
  bool notified_ = false;
};

}  // namespace qorvex
