#include "qorvex/ast/names.h"

#include <string>
#include <unordered_map>

#include "ast/node_util.h"
#include "ast/source_index.h"
#include "ast/syntax_provider_text.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/syntax_provider.h"

namespace qorvex {

QX_DEFINE_CLASS(TSQLQualifiedName, TastNode)
QX_DEFINE_CLASS(TSQLDatabaseObject, TSQLQualifiedName)
QX_DEFINE_CLASS(TSQLObjectColumn, TSQLDatabaseObject)

// ---------------------------------------------------------------------------------------
// TSQLQualifiedName

void TSQLQualifiedName::AddName(std::string Name, bool Quoted) {
  Names_.insert(Names_.begin(), std::move(Name));
  if (Quoted || !Quoted_.empty()) {
    Quoted_.resize(Names_.size() - 1, false);
    Quoted_.insert(Quoted_.begin(), Quoted);
  }
}

void TSQLQualifiedName::AddPrefix(std::string Prefix, bool Quoted) {
  Names_.push_back(std::move(Prefix));
  if (Quoted || !Quoted_.empty()) {
    Quoted_.resize(Names_.size() - 1, false);
    Quoted_.push_back(Quoted);
  }
}

std::string TSQLQualifiedName::GetObjName() const {
  return Names_.empty() ? std::string() : Names_.front();
}

void TSQLQualifiedName::SetObjName(std::string Name, bool Quoted) {
  if (Names_.empty())
    Names_.push_back(std::move(Name));
  else
    Names_.front() = std::move(Name);
  if (Quoted || !Quoted_.empty())
    SetQuoted(0, Quoted);
}

// An empty part is never taken as quoted: a qualifying one is written empty (db..t) and
// an empty object name is written quoted anyway, so either reads back the same.
bool TSQLQualifiedName::IsQuoted(int Index) const {
  detail::CheckIndex(Index, Names_.size());
  const auto i = static_cast<std::size_t>(Index);
  return i < Quoted_.size() && Quoted_[i] && !Names_[i].empty();
}

void TSQLQualifiedName::SetQuoted(int Index, bool Quoted) {
  detail::CheckIndex(Index, Names_.size());
  if (!Quoted && Quoted_.empty())
    return;
  Quoted_.resize(Names_.size(), false);
  Quoted_[static_cast<std::size_t>(Index)] = Quoted;
}

std::string TSQLQualifiedName::GetPrefix(int Index) const {
  return GetNames(Index + 1);
}

std::string TSQLQualifiedName::GetNames(int Index) const {
  detail::CheckIndex(Index, Names_.size());
  return Names_[static_cast<std::size_t>(Index)];
}

void TSQLQualifiedName::SetNames(int Index, std::string Name, bool Quoted) {
  detail::CheckIndex(Index, Names_.size());
  Names_[static_cast<std::size_t>(Index)] = std::move(Name);
  SetQuoted(Index, Quoted);
}

std::string TSQLQualifiedName::GetQualifiedName() const {
  std::string text;
  for (auto it = Names_.rbegin(); it != Names_.rend(); ++it) {
    if (it != Names_.rbegin())
      text += '.';
    text += *it;
  }
  return text;
}

std::string TSQLQualifiedName::GetMarkedName() const {
  std::string text;
  for (int i = Count() - 1; i >= 0; --i) {
    const std::string& part = Names_[static_cast<std::size_t>(i)];
    text += IsQuoted(i) ? "\"" + part + "\"" : part;
    if (i > 0)
      text += '.';
  }
  return text;
}

void TSQLQualifiedName::BuildFullName(TSQLBuilder& Builder) const {
  for (int i = Count() - 1; i >= 0; --i) {
    const std::string& part = Names_[static_cast<std::size_t>(i)];
    // A qualifying part left empty (db..t) stays empty rather than becoming a quoted
    // empty name, so that the text reads back as the same name; an empty object name
    // itself is written quoted, as nothing could stand in its place.
    if (!part.empty() || i == 0)
      Builder.WriteIdentifier(part, GetSyntaxProvider(), IsQuoted(i));
    if (i > 0)
      Builder.WriteSymbol(".");
  }
}

void TSQLQualifiedName::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  if (const auto* name = dynamic_cast<const TSQLQualifiedName*>(&Source)) {
    Names_ = name->Names_;
    Quoted_ = name->Quoted_;
  }
}

void TSQLQualifiedName::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  BuildFullName(Builder);
}

std::string TSQLQualifiedName::DumpDetails() const {
  return GetMarkedName();
}

// ---------------------------------------------------------------------------------------
// TSQLDatabaseObject

void TSQLDatabaseObject::Assign(const TastExtender& Source) {
  TSQLQualifiedName::Assign(Source);
  if (const auto* object = dynamic_cast<const TSQLDatabaseObject*>(&Source))
    FromSource_ = object->FromSource_;
}

void TSQLDatabaseObject::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  if (FromSource_ == nullptr) {
    BuildFullName(Builder);
    return;
  }
  if (const TSQLAlias* alias = FromSource_->GetAlias()) {
    alias->WriteName(Builder);
  } else if (const auto* object = dynamic_cast<const TSQLFromObject*>(FromSource_)) {
    if (object->GetDatabaseObject() != nullptr)
      object->GetDatabaseObject()->BuildFullName(Builder);
  }
}

void TSQLDatabaseObject::FixupObjects(std::vector<TSQLFromSource*>& List) {
  if (TSQLFromSource* found = FindFromSource(List))
    FromSource_ = found;
  TSQLQualifiedName::FixupObjects(List);
}

void TSQLDatabaseObject::RemoveReferencesToFromSource(const TSQLFromSource* Source) {
  if (FromSource_ == Source)
    FromSource_ = nullptr;
  TSQLQualifiedName::RemoveReferencesToFromSource(Source);
}

std::string TSQLDatabaseObject::DumpDetails() const {
  std::string details = GetMarkedName();
  if (FromSource_ != nullptr) {
    const std::string alias = FromSource_->GetAliasName();
    details += " -> " + (alias.empty() ? FromSource_->GetSimpleExpression() : alias);
  }
  return details;
}

TSQLFromSource* TSQLDatabaseObject::FindFromSource(const std::vector<TSQLFromSource*>& List) const {
  if (Count() == 0 || GetSyntaxProvider() == nullptr)
    return nullptr;
  // The part that names the source in an indexed block: a column's qualifier, else the
  // name itself. Without one (an empty part) every source is compared.
  const int part = dynamic_cast<const TSQLObjectColumn*>(this) != nullptr ? 1 : 0;
  const std::string key =
      part < Count() ? ast::TSQLFromSourceBlockIndex::Key(GetNames(part)) : std::string();
  // Blocks from the top of the stack down; a null entry opens a block.
  std::size_t end = List.size();
  while (end > 0) {
    // An indexed block knows where it begins.
    const ast::TSQLFromSourceBlockIndex* index = ast::TSQLFromSourceBlockIndex::Find(List, end);
    std::size_t begin = index != nullptr ? index->GetBegin() : end;
    while (index == nullptr && begin > 0 && List[begin - 1] != nullptr)
      --begin;
    if (index != nullptr && !key.empty()) {
      if (TSQLFromSource* found = FindInIndex(List, *index, key))
        return found;
      end = begin > 0 ? begin - 1 : 0;
      continue;
    }
    for (std::size_t i = begin; i < end; ++i) {
      if (MatchesAlias(*List[i]))
        return List[i];
    }
    // A source with an alias answers only to its alias.
    for (std::size_t i = begin; i < end; ++i) {
      if (List[i]->GetAlias() == nullptr && MatchesObject(*List[i]))
        return List[i];
    }
    end = begin > 0 ? begin - 1 : 0;
  }
  return nullptr;
}

TSQLFromSource* TSQLDatabaseObject::FindInIndex(const std::vector<TSQLFromSource*>& List,
                                                const ast::TSQLFromSourceBlockIndex& Index,
                                                const std::string& Key) const {
  // The same order as a direct search: alias matches, then object matches of sources
  // without an alias (an aliased source answers only to its alias); each in list order.
  if (const std::vector<std::size_t>* positions = Index.ByAlias(Key)) {
    for (std::size_t i : *positions) {
      if (MatchesAlias(*List[i]))
        return List[i];
    }
  }
  if (const std::vector<std::size_t>* positions = Index.ByObject(Key)) {
    for (std::size_t i : *positions) {
      if (List[i]->GetAlias() == nullptr && MatchesObject(*List[i]))
        return List[i];
    }
  }
  return nullptr;
}

bool TSQLDatabaseObject::MatchesAlias(const TSQLFromSource& Source) const {
  const TSQLAlias* alias = Source.GetAlias();
  if (alias == nullptr || Count() != 1)
    return false;
  TSQLDatabaseObject aliasName(GetSyntaxProvider());
  aliasName.AddName(alias->Name);
  return GetSyntaxProvider()->IsDBObjectNamesEqual(*this, aliasName);
}

bool TSQLDatabaseObject::MatchesObject(const TSQLFromSource& Source) const {
  const auto* object = dynamic_cast<const TSQLFromObject*>(&Source);
  if (object == nullptr || object->GetDatabaseObject() == nullptr)
    return false;
  return GetSyntaxProvider()->IsDBObjectNamesEqual(*this, *object->GetDatabaseObject());
}

// ---------------------------------------------------------------------------------------
// TSQLObjectColumn

void TSQLObjectColumn::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  const TSQLFromSource* source = GetFromSource();
  if (source == nullptr) {
    BuildFullName(Builder);
    return;
  }
  if (const TSQLAlias* alias = source->GetAlias()) {
    alias->WriteName(Builder);
    Builder.WriteSymbol(".");
  } else if (const auto* object = dynamic_cast<const TSQLFromObject*>(source)) {
    if (object->GetDatabaseObject() != nullptr) {
      object->GetDatabaseObject()->BuildFullName(Builder);
      Builder.WriteSymbol(".");
    }
  }
  Builder.WriteIdentifier(GetObjName(), GetSyntaxProvider(), Count() > 0 && IsQuoted(0));
}

void TSQLObjectColumn::FixupObjects(std::vector<TSQLFromSource*>& List) {
  if (Count() == 1) {
    if (TSQLFromSource* found = FindColumnSource(List))
      SetFromSource(found);
    TSQLQualifiedName::FixupObjects(List);
    return;
  }
  TSQLDatabaseObject::FixupObjects(List);
}

// An unqualified name belongs to the innermost block with a source that has such a
// column. The search stops, finding nothing, where the answer is not certain: a block
// in which two sources have the column, or none has it but a source's columns are not
// known. A block without sources is passed over.
TSQLFromSource* TSQLObjectColumn::FindColumnSource(const std::vector<TSQLFromSource*>& List) const {
  const std::string& name = GetObjName();
  if (name.empty() || name == "*")
    return nullptr;
  std::size_t end = List.size();
  while (end > 0) {
    // An indexed block answers through its field index.
    if (const ast::TSQLFromSourceBlockIndex* index =
            ast::TSQLFromSourceBlockIndex::Find(List, end)) {
      const ast::TSQLFromSourceBlockIndex::FieldSources sources = index->SourcesWithField(name);
      if (sources.Count == 1)
        return sources.Last;
      if (sources.Count > 1 || index->HasSourceWithoutFields())
        return nullptr;
      end = index->GetBegin() > 0 ? index->GetBegin() - 1 : 0;
      continue;
    }
    std::size_t begin = end;
    while (begin > 0 && List[begin - 1] != nullptr)
      --begin;
    TSQLFromSource* found = nullptr;
    int matches = 0;
    bool unknown = false;
    for (std::size_t i = begin; i < end; ++i) {
      const std::vector<std::string>& fields = List[i]->Fields;
      if (fields.empty())
        unknown = true;
      for (const std::string& field : fields) {
        if (sptext::SameText(field, name)) {
          found = List[i];
          ++matches;
          break;
        }
      }
    }
    if (matches == 1)
      return found;
    if (matches > 1 || unknown)
      return nullptr;
    end = begin > 0 ? begin - 1 : 0;
  }
  return nullptr;
}

bool TSQLObjectColumn::MatchesAlias(const TSQLFromSource& Source) const {
  const TSQLAlias* alias = Source.GetAlias();
  if (alias == nullptr || Count() != 2)
    return false;
  TSQLDatabaseObject aliasName(GetSyntaxProvider());
  aliasName.AddName(alias->Name);
  return GetSyntaxProvider()->IsColumnOfDBObject(*this, aliasName);
}

bool TSQLObjectColumn::MatchesObject(const TSQLFromSource& Source) const {
  const auto* object = dynamic_cast<const TSQLFromObject*>(&Source);
  if (object == nullptr || object->GetDatabaseObject() == nullptr)
    return false;
  return GetSyntaxProvider()->IsColumnOfDBObject(*this, *object->GetDatabaseObject());
}

// ---------------------------------------------------------------------------------------

namespace {
// Rebinds the names under Root; Lookup gives a source's new source, or null.
template <class LookupFn>
void Remap(TastExtender& Root, const LookupFn& Lookup) {
  if (auto* object = dynamic_cast<TSQLDatabaseObject*>(&Root)) {
    if (TSQLFromSource* to = Lookup(object->GetFromSource()))
      object->SetFromSource(to);
  }
  std::vector<TastExtender*> children;
  Root.GetMyChildren(children);
  for (TastExtender* child : children)
    Remap(*child, Lookup);
}
}  // namespace

void RemapFromSourceReferences(TastExtender& Root, const TSQLFromSourceMap& Map) {
  if (Map.empty())
    return;
  // The first pair of a source counts. A few pairs are searched in place; a statement
  // copy maps every one of its sources and is looked up by hash.
  if (Map.size() <= 8) {
    Remap(Root, [&](const TSQLFromSource* From) -> TSQLFromSource* {
      for (const auto& [from, to] : Map) {
        if (from == From)
          return to;
      }
      return nullptr;
    });
    return;
  }
  std::unordered_map<const TSQLFromSource*, TSQLFromSource*> lookup;
  lookup.reserve(Map.size());
  for (const auto& [from, to] : Map)
    lookup.emplace(from, to);
  Remap(Root, [&](const TSQLFromSource* From) -> TSQLFromSource* {
    auto it = lookup.find(From);
    return it != lookup.end() ? it->second : nullptr;
  });
}

// ---------------------------------------------------------------------------------------
// ast::TSQLFromSourceBlockIndex

namespace ast {

namespace {
// The indexes in force on this thread, innermost last.
thread_local std::vector<const TSQLFromSourceBlockIndex*> ActiveIndexes;
}  // namespace

TSQLFromSourceBlockIndex::TSQLFromSourceBlockIndex(const std::vector<TSQLFromSource*>& List,
                                                   std::size_t Begin)
    : List_(&List), Begin_(Begin), End_(List.size()) {
  if (End_ < Begin_ + kMinSources || (Begin_ > 0 && List[Begin_ - 1] != nullptr))
    return;
  for (std::size_t i = Begin_; i < End_; ++i) {
    const TSQLFromSource* source = List[i];
    if (source == nullptr)
      return;  // not one block: left unindexed
    if (const TSQLAlias* alias = source->GetAlias())
      Aliases_[Key(alias->Name)].push_back(i);
    const auto* object = dynamic_cast<const TSQLFromObject*>(source);
    if (object != nullptr && object->GetDatabaseObject() != nullptr &&
        object->GetDatabaseObject()->Count() > 0)
      Objects_[Key(object->GetDatabaseObject()->GetNames(0))].push_back(i);
  }
  ActiveIndexes.push_back(this);
  Registered_ = true;
}

TSQLFromSourceBlockIndex::~TSQLFromSourceBlockIndex() {
  if (!Registered_)
    return;
  auto it = std::find(ActiveIndexes.rbegin(), ActiveIndexes.rend(), this);
  if (it != ActiveIndexes.rend())
    ActiveIndexes.erase(std::next(it).base());
}

const TSQLFromSourceBlockIndex* TSQLFromSourceBlockIndex::Find(
    const std::vector<TSQLFromSource*>& List, std::size_t End) {
  for (auto it = ActiveIndexes.rbegin(); it != ActiveIndexes.rend(); ++it) {
    if ((*it)->List_ == &List && (*it)->End_ == End)
      return *it;
  }
  return nullptr;
}

const std::vector<std::size_t>* TSQLFromSourceBlockIndex::ByAlias(const std::string& Key) const {
  auto it = Aliases_.find(Key);
  return it != Aliases_.end() ? &it->second : nullptr;
}

const std::vector<std::size_t>* TSQLFromSourceBlockIndex::ByObject(const std::string& Key) const {
  auto it = Objects_.find(Key);
  return it != Objects_.end() ? &it->second : nullptr;
}

TSQLFromSourceBlockIndex::FieldSources TSQLFromSourceBlockIndex::SourcesWithField(
    std::string_view Name) const {
  if (!FieldsBuilt_) {
    for (std::size_t i = Begin_; i < End_; ++i) {
      TSQLFromSource* source = (*List_)[i];
      if (source->Fields.empty())
        SourceWithoutFields_ = true;
      // A source counts once however often it lists a name.
      std::unordered_map<std::string, bool> seen;
      for (const std::string& field : source->Fields) {
        std::string key = Key(field);
        if (!seen.emplace(key, true).second)
          continue;
        FieldSources& entry = Fields_[std::move(key)];
        ++entry.Count;
        entry.Last = source;
      }
    }
    FieldsBuilt_ = true;
  }
  auto it = Fields_.find(Key(Name));
  return it != Fields_.end() ? it->second : FieldSources{};
}

bool TSQLFromSourceBlockIndex::HasSourceWithoutFields() const {
  SourcesWithField({});
  return SourceWithoutFields_;
}

std::string TSQLFromSourceBlockIndex::Key(std::string_view Part) {
  std::string key(Part);
  for (char& c : key) {
    if (c >= 'a' && c <= 'z')
      c = static_cast<char>(c - 'a' + 'A');
  }
  return key;
}

}  // namespace ast

}  // namespace qorvex
