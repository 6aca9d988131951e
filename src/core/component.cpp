#include "qorvex/core/component.h"

#include <algorithm>

namespace qorvex {

namespace {
void AddOnce(std::vector<TqxComponent*>& list, TqxComponent* c) {
  if (std::find(list.begin(), list.end(), c) == list.end())
    list.push_back(c);
}
void RemoveAll(std::vector<TqxComponent*>& list, TqxComponent* c) {
  list.erase(std::remove(list.begin(), list.end(), c), list.end());
}
}  // namespace

TqxComponent::~TqxComponent() {
  BeginDestroy();
}

void TqxComponent::FreeNotification(TqxComponent* other) {
  if (other == nullptr || other == this)
    return;
  AddOnce(subscribers_, other);
  AddOnce(other->subscribers_, this);
}

void TqxComponent::RemoveFreeNotification(TqxComponent* other) {
  if (other == nullptr)
    return;
  RemoveAll(subscribers_, other);
  RemoveAll(other->subscribers_, this);
}

void TqxComponent::BeginDestroy() {
  destroying_ = true;
  if (notified_)
    return;
  notified_ = true;
  // A subscriber may unsubscribe others while it is told, so take one at a time.
  while (!subscribers_.empty()) {
    TqxComponent* other = subscribers_.back();
    subscribers_.pop_back();
    RemoveAll(other->subscribers_, this);
    other->Notification(this, TOperation::opRemove);
  }
}

}  // namespace qorvex
