#include "qorvex/model/sql_builder.h"

#include "qorvex/ast/query.h"
#include "qorvex/model/query_builder.h"

namespace qorvex {

TqxBaseSQLBuilder::TqxBaseSQLBuilder() = default;

TqxBaseSQLBuilder::~TqxBaseSQLBuilder() {
  BeginDestroy();
  if (QueryBuilder_ != nullptr) {
    QueryBuilder_->UnregisterSQLBuilder(this);
    QueryBuilder_ = nullptr;
  }
}

void TqxBaseSQLBuilder::SetQueryBuilder(TqxBaseQueryBuilder* Value) {
  if (Value == QueryBuilder_)
    return;
  if (QueryBuilder_ != nullptr) {
    RemoveFreeNotification(QueryBuilder_);
    QueryBuilder_->UnregisterSQLBuilder(this);
  }
  QueryBuilder_ = Value;
  if (Value != nullptr) {
    FreeNotification(Value);
    Value->RegisterSQLBuilder(this);
  }
  SQLUpdated();
}

void TqxBaseSQLBuilder::SQLUpdated() {
  Statement_.reset();
  if (QueryBuilder_ != nullptr)
    Statement_ = QueryBuilder_->GetStatementCopy();
  if (OnSQLUpdated)
    OnSQLUpdated(this);
}

std::string TqxBaseSQLBuilder::GetSQL() const {
  if (!Statement_)
    return {};
  if (!Builder_)
    Builder_ = SQLBuilderClass().Create(&Stream_);
  Builder_->ResetBuilder();
  Statement_->BuildSQL(*Builder_, true);
  return Stream_;
}

void TqxBaseSQLBuilder::Notification(TqxComponent* Component, TOperation Operation) {
  TqxComponent::Notification(Component, Operation);
  if (Operation == TOperation::opRemove && Component == QueryBuilder_) {
    // The copy may refer to the builder's dialect, which need not outlive the builder.
    QueryBuilder_ = nullptr;
    Statement_.reset();
  }
}

TqxSQLBuilderPlainText::~TqxSQLBuilderPlainText() = default;

const TSQLBuilderClass& TqxSQLBuilderPlainText::SQLBuilderClass() const {
  return TSQLBuilderPlainText::StaticClass();
}

}  // namespace qorvex
