#pragma once

#include <string>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/core/errors.h"

namespace qorvex {

// Base of the providers that read a database through a connection component. The
// `Connection` property follows the component with free notification: it becomes null
// when the connection is destroyed, and a destroyed provider unsubscribes first.
template <class TConnection>
class TqxConnectedMetadataProvider : public TqxBaseMetadataProvider {
 public:
  ~TqxConnectedMetadataProvider() override {
    SetConnection(nullptr);
    BeginDestroy();
  }

  TConnection* GetConnection() const { return Connection_; }
  void SetConnection(TConnection* Value) {
    if (Value == Connection_)
      return;
    if (Connection_ != nullptr)
      Connection_->RemoveFreeNotification(this);
    Connection_ = Value;
    if (Connection_ != nullptr)
      Connection_->FreeNotification(this);
  }

 protected:
  void Notification(TqxComponent* Component, TOperation Operation) override {
    TqxBaseMetadataProvider::Notification(Component, Operation);
    if (Operation == TOperation::opRemove && Component == Connection_)
      Connection_ = nullptr;
  }

  // The open connection; raises EqxError naming `Provider.Operation` without one.
  TConnection& RequireConnection(const char* Provider, const char* Operation) {
    if (Connection_ == nullptr)
      throw EqxError(std::string(Provider) + "." + Operation +
                     ": the Connection property is not set");
    Connection_->Open();
    return *Connection_;
  }

 private:
  TConnection* Connection_ = nullptr;
};

}  // namespace qorvex
