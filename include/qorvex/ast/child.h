#pragma once

#include <memory>
#include <utility>

// Declares an owned child node of a tree class: the field `Name_` and its accessors
// GetName() (a reference, none when empty), SetName(node) (frees the old child) and
// ExtractName() (hands the child out, leaving none). The setter and the extractor are
// defined out of line with QX_DEFINE_CHILD_NODE, so the child's class may be incomplete
// where the owner is declared.
#define QX_CHILD_NODE(Type, Name)              \
 public:                                       \
  Type* Get##Name() const {                    \
    return Name##_.get();                      \
  }                                            \
  void Set##Name(std::unique_ptr<Type> Value); \
  std::unique_ptr<Type> Extract##Name();       \
                                               \
 private:                                      \
  std::unique_ptr<Type> Name##_;               \
                                               \
 public:

#define QX_DEFINE_CHILD_NODE(Cls, Type, Name)        \
  void Cls::Set##Name(std::unique_ptr<Type> Value) { \
    Name##_ = std::move(Value);                      \
  }                                                  \
  std::unique_ptr<Type> Cls::Extract##Name() {       \
    return std::move(Name##_);                       \
  }
