#include "qorvex/ast/syntax_provider.h"

#include <string>

#include "ast/syntax_provider_text.h"
#include "qorvex/core/errors.h"

namespace qorvex {

TastSyntaxProvider::TastSyntaxProvider() = default;

TastSyntaxProvider::~TastSyntaxProvider() = default;

void TastSyntaxProvider::GetComparisonOperators(std::vector<std::string>& List) const {
  List = {"=", ">", ">=", "<", "<=", "<>"};
}

void TastSyntaxProvider::GetUnionOperatorsList(std::vector<std::string>& List) const {
  List = {"Union", "Union All"};
}

std::string TastSyntaxProvider::GetQuoteBegin() const {
  return {};
}

std::string TastSyntaxProvider::GetQuoteEnd() const {
  return {};
}

bool TastSyntaxProvider::IsReservedWord(std::string_view /*Word*/) const {
  return false;
}

bool TastSyntaxProvider::ReadQuotedName(std::string_view Text, std::string& Name) const {
  const std::string begin = GetQuoteBegin();
  const std::string end = GetQuoteEnd();
  if (begin.empty() || end.empty() || Text.size() < begin.size() + end.size() ||
      Text.substr(0, begin.size()) != begin || Text.substr(Text.size() - end.size()) != end)
    return false;
  const std::string_view inner = Text.substr(begin.size(), Text.size() - begin.size() - end.size());
  std::string name;
  for (std::size_t i = 0; i < inner.size();) {
    if (inner.compare(i, end.size(), end) == 0) {
      // Inside the quotes a closing quote stands only doubled.
      if (inner.compare(i + end.size(), end.size(), end) != 0)
        return false;
      name += end;
      i += 2 * end.size();
    } else {
      name += inner[i++];
    }
  }
  Name = std::move(name);
  return true;
}

bool TastSyntaxProvider::IsUniversalExpressions() const {
  return false;
}

// ---------------------------------------------------------------------------------------
// Extender registry

const TastClass* TastSyntaxProvider::FindExtenderClass(const TastClass& NodeClass,
                                                       bool Inherited) const {
  const TastClassToExtenderEntry* candidate = nullptr;
  int candidateDistance = 0;
  for (const TastClassToExtenderEntry& entry : Extenders_) {
    if (entry.NodeClass == &NodeClass)
      return entry.ExtenderClass;
    if (!Inherited)
      continue;
    const int distance = NodeClass.DistanceTo(*entry.NodeClass);
    if (distance < 0)
      continue;
    if (candidate == nullptr || distance < candidateDistance) {
      candidate = &entry;
      candidateDistance = distance;
    }
  }
  return candidate != nullptr ? candidate->ExtenderClass : nullptr;
}

namespace {
[[noreturn]] void AlreadyRegistered(const TastClass& NodeClass) {
  throw EqxError("Extender for \"" + std::string(NodeClass.ClassName()) + "\" already registered!");
}
}  // namespace

void TastSyntaxProvider::RegisterExtender(const TastClass& NodeClass,
                                          const TastClass& ExtenderClass) {
  if (FindExtenderClass(NodeClass, false) != nullptr)
    AlreadyRegistered(NodeClass);
  Extenders_.push_back({&NodeClass, &ExtenderClass});
}

void TastSyntaxProvider::RegisterExtender(const std::vector<const TastClass*>& NodeClasses,
                                          const TastClass& ExtenderClass) {
  for (std::size_t i = 0; i < NodeClasses.size(); ++i) {
    if (NodeClasses[i] == nullptr)
      throw EqxError("Extender registration without a node class");
    if (FindExtenderClass(*NodeClasses[i], false) != nullptr)
      AlreadyRegistered(*NodeClasses[i]);
    for (std::size_t j = 0; j < i; ++j) {
      if (NodeClasses[j] == NodeClasses[i])
        AlreadyRegistered(*NodeClasses[i]);
    }
  }
  for (const TastClass* nodeClass : NodeClasses)
    Extenders_.push_back({nodeClass, &ExtenderClass});
}

bool TastSyntaxProvider::UnregisterExtender(const TastClass& NodeClass) {
  for (auto it = Extenders_.begin(); it != Extenders_.end(); ++it) {
    if (it->NodeClass == &NodeClass) {
      Extenders_.erase(it);
      return true;
    }
  }
  return false;
}

// ---------------------------------------------------------------------------------------
// Union operators

std::string TastSyntaxProvider::NormalizeUnionOperator(std::string_view Op) const {
  std::string lower = sptext::LowerCase(Op);
  std::vector<std::string> list;
  GetUnionOperatorsList(list);
  for (const std::string& known : list) {
    if (sptext::SameText(known, lower))
      return known;
  }
  return lower;
}

std::string TastSyntaxProvider::GetUnionOperatorIcon(std::string_view Op) const {
  // Upper case with surrounding blanks dropped and inner runs of blanks made one space.
  std::string key;
  for (char c : Op) {
    const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (blank) {
      if (!key.empty() && key.back() != ' ')
        key += ' ';
    } else {
      key += sptext::Upper(c);
    }
  }
  if (!key.empty() && key.back() == ' ')
    key.pop_back();
  static const struct {
    const char* Op;
    const char* Image;
  } kIcons[] = {
      {"UNION", "QXQB_UNION"},         {"UNION ALL", "QXQB_UNIONALL"},
      {"EXCEPT", "QXQB_EXCEPT"},       {"EXCEPT ALL", "QXQB_EXCEPTALL"},
      {"INTERSECT", "QXQB_INTERSECT"}, {"INTERSECT ALL", "QXQB_INTERSECTALL"},
  };
  for (const auto& icon : kIcons) {
    if (key == icon.Op)
      return icon.Image;
  }
  return {};
}

}  // namespace qorvex
