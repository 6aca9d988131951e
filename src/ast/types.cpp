#include "qorvex/ast/types.h"

#include <string>

#include "ast/node_util.h"
#include "qorvex/ast/builder.h"

namespace qorvex {

QX_DEFINE_CLASS(TSQLType, TastNode)
QX_DEFINE_CLASS(TSQLTypeBuiltIn, TSQLType)
QX_DEFINE_CLASS(TSQLTypeUser, TSQLType)

QX_DEFINE_CHILD_NODE(TSQLTypeUser, TSQLQualifiedName, Name)

void TSQLTypeBuiltIn::Assign(const TastExtender& Source) {
  TSQLType::Assign(Source);
  const auto* type = dynamic_cast<const TSQLTypeBuiltIn*>(&Source);
  if (type == nullptr)
    return;
  Words = type->Words;
  SizeIndex = type->SizeIndex;
  HasSize = type->HasSize;
  Size = type->Size;
  HasScale = type->HasScale;
  Scale = type->Scale;
}

void TSQLTypeBuiltIn::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  for (std::size_t i = 0; i < Words.size(); ++i) {
    Builder.WriteKeyword(Words[i]);
    if (static_cast<int>(i) == SizeIndex && HasSize) {
      Builder.WriteSymbol("(");
      Builder.WriteSymbol(std::to_string(Size));
      if (HasScale) {
        Builder.WriteSymbol(",");
        Builder.WriteSymbol(std::to_string(Scale));
      }
      Builder.WriteSymbol(")");
    } else {
      Builder.Space();
    }
  }
}

std::string TSQLTypeBuiltIn::DumpDetails() const {
  std::string details;
  for (std::size_t i = 0; i < Words.size(); ++i) {
    if (i > 0)
      details += ' ';
    details += Words[i];
    if (static_cast<int>(i) == SizeIndex && HasSize) {
      details += '(' + std::to_string(Size);
      if (HasScale)
        details += ',' + std::to_string(Scale);
      details += ')';
    }
  }
  return details;
}

TSQLTypeUser::~TSQLTypeUser() = default;

void TSQLTypeUser::Assign(const TastExtender& Source) {
  TSQLType::Assign(Source);
  const auto* type = dynamic_cast<const TSQLTypeUser*>(&Source);
  if (type != nullptr && type != this)
    Name_ = detail::CloneChild(type->Name_);
}

void TSQLTypeUser::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLType::GetMyChildren(List);
  detail::AddChild(List, Name_.get());
}

void TSQLTypeUser::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  detail::Write(Name_.get(), Builder, MultiLine);
}

}  // namespace qorvex
