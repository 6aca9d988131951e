#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/child.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// The target type of a CAST. The base writes nothing.
class QORVEX_SQL_EXPORT TSQLType : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
};

// A built-in type of one or more words, one of which may carry a size and a scale, as
// in NUMERIC(10,2) or CHARACTER VARYING(20). A word without size is followed by a
// space, the last one too.
class QORVEX_SQL_EXPORT TSQLTypeBuiltIn : public TSQLType {
  QX_CLASS(TastClass)

 public:
  using TSQLType::TSQLType;

  std::vector<std::string> Words;
  int SizeIndex = 0;
  bool HasSize = false;
  int Size = 0;
  bool HasScale = false;
  int Scale = 0;

  void AddName(std::string Word) { Words.push_back(std::move(Word)); }

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// A user-defined type, by its qualified name.
class QORVEX_SQL_EXPORT TSQLTypeUser : public TSQLType {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLQualifiedName, Name)

 public:
  explicit TSQLTypeUser(TastSyntaxProvider* SyntaxProvider) : TSQLType(SyntaxProvider) {}
  ~TSQLTypeUser() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

}  // namespace qorvex
