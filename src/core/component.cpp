#include "qorvex/core/component.h"

#include <algorithm>

namespace qorvex {

namespace {
// Up to this many subscribers a list is searched; a longer one keeps positions.
constexpr std::size_t kSearchedSubscribers = 32;
}  // namespace

void TqxComponent::AddSubscriber(TqxComponent& owner, TqxComponent* other) {
  std::vector<TqxComponent*>& list = owner.subscribers_;
  if (!owner.positions_) {
    if (std::find(list.begin(), list.end(), other) != list.end())
      return;
    list.push_back(other);
    if (list.size() > kSearchedSubscribers) {
      owner.positions_ = std::make_unique<std::unordered_map<TqxComponent*, std::size_t>>();
      for (std::size_t i = 0; i < list.size(); ++i)
        owner.positions_->emplace(list[i], i);
    }
    return;
  }
  if (!owner.positions_->emplace(other, list.size()).second)
    return;
  list.push_back(other);
}

void TqxComponent::RemoveSubscriber(TqxComponent& owner, TqxComponent* other) {
  std::vector<TqxComponent*>& list = owner.subscribers_;
  if (!owner.positions_) {
    list.erase(std::remove(list.begin(), list.end(), other), list.end());
    return;
  }
  auto it = owner.positions_->find(other);
  if (it == owner.positions_->end())
    return;
  list[it->second] = nullptr;
  owner.positions_->erase(it);
  while (!list.empty() && list.back() == nullptr)
    list.pop_back();
  // Holes are squeezed out once they outnumber the subscribers.
  if (list.size() > 2 * owner.positions_->size() + kSearchedSubscribers) {
    list.erase(std::remove(list.begin(), list.end(), nullptr), list.end());
    for (std::size_t i = 0; i < list.size(); ++i)
      (*owner.positions_)[list[i]] = i;
  }
}

TqxComponent::~TqxComponent() {
  BeginDestroy();
}

void TqxComponent::FreeNotification(TqxComponent* other) {
  if (other == nullptr || other == this)
    return;
  AddSubscriber(*this, other);
  AddSubscriber(*other, this);
}

void TqxComponent::RemoveFreeNotification(TqxComponent* other) {
  if (other == nullptr)
    return;
  RemoveSubscriber(*this, other);
  RemoveSubscriber(*other, this);
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
    if (other == nullptr)
      continue;
    if (positions_)
      positions_->erase(other);
    RemoveSubscriber(*other, this);
    other->Notification(this, TOperation::opRemove);
  }
}

}  // namespace qorvex
