#pragma once

#include <functional>
#include <memory>
#include <string>

#include "qorvex/ast/builder.h"
#include "qorvex/core/component.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TSQLSubSelectStatement;
class TqxBaseQueryBuilder;
class TqxBaseSQLBuilder;

using TqxNotifyEvent = std::function<void(TqxBaseSQLBuilder* Sender)>;

// A component that keeps the current SQL of a query builder: after every change of the
// model it takes a fresh copy of the statement, tells OnSQLUpdated, and writes the copy
// through its builder class when SQL is read.
class QORVEX_MODEL_EXPORT TqxBaseSQLBuilder : public TqxComponent {
 public:
  TqxBaseSQLBuilder();
  ~TqxBaseSQLBuilder() override;

  TqxBaseQueryBuilder* GetQueryBuilder() const { return QueryBuilder_; }
  // Leaves the old builder's list, joins the new one's and takes its statement.
  void SetQueryBuilder(TqxBaseQueryBuilder* Value);

  // Takes a fresh copy of the query builder's statement, then calls OnSQLUpdated.
  void SQLUpdated();
  // The statement's text, one clause per line; empty without a statement.
  std::string GetSQL() const;
  // The stored statement; null without one.
  const TSQLSubSelectStatement* GetStatement() const { return Statement_.get(); }

  TqxNotifyEvent OnSQLUpdated;

 protected:
  // The builder class the text is written with.
  virtual const TSQLBuilderClass& SQLBuilderClass() const = 0;
  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  mutable std::string Stream_;
  mutable std::unique_ptr<TSQLBuilder> Builder_;  // made on first use from SQLBuilderClass
  TqxBaseQueryBuilder* QueryBuilder_ = nullptr;
  std::unique_ptr<TSQLSubSelectStatement> Statement_;
};

// The SQL builder component for the formatted plain text of the query (CR LF breaks).
class QORVEX_MODEL_EXPORT TqxSQLBuilderPlainText : public TqxBaseSQLBuilder {
 public:
  ~TqxSQLBuilderPlainText() override;

 protected:
  const TSQLBuilderClass& SQLBuilderClass() const override;
};

}  // namespace qorvex
