#pragma once

#include <memory>
#include <string_view>

#include "qorvex/core/errors.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// A class reference: the name of a class, its parent and, for concrete classes, a
// factory. It gives class names, "derives from", the distance to an ancestor and
// creation by class without RTTI. Descriptors are unique per class, so identity of
// the descriptor is identity of the class.
class QORVEX_SQL_EXPORT TqxClass {
 public:
  constexpr TqxClass(std::string_view name, const TqxClass* parent) noexcept
      : name_(name), parent_(parent) {}
  TqxClass(const TqxClass&) = delete;
  TqxClass& operator=(const TqxClass&) = delete;

  std::string_view ClassName() const noexcept { return name_; }
  const TqxClass* ClassParent() const noexcept { return parent_; }

  // Number of parent steps from this class up to `ancestor`: 0 for the class itself,
  // -1 when `ancestor` is not an ancestor.
  int DistanceTo(const TqxClass& ancestor) const noexcept {
    int steps = 0;
    for (const TqxClass* c = this; c != nullptr; c = c->parent_, ++steps) {
      if (c == &ancestor)
        return steps;
    }
    return -1;
  }
  bool InheritsFrom(const TqxClass& ancestor) const noexcept { return DistanceTo(ancestor) >= 0; }

 private:
  std::string_view name_;
  const TqxClass* parent_;
};

// The class reference of one family whose virtual constructor takes `Args`.
template <class Base, class... Args>
class TqxClassOf : public TqxClass {
 public:
  using Factory = std::unique_ptr<Base> (*)(Args...);

  constexpr TqxClassOf(std::string_view name, const TqxClassOf* parent, Factory factory) noexcept
      : TqxClass(name, parent), factory_(factory) {}

  const TqxClassOf* ClassParent() const noexcept {
    return static_cast<const TqxClassOf*>(TqxClass::ClassParent());
  }
  bool IsAbstract() const noexcept { return factory_ == nullptr; }

  // Virtual construction: a new object of exactly this class.
  std::unique_ptr<Base> Create(Args... args) const {
    if (factory_ == nullptr) {
      throw EqxError("Abstract class " + std::string(ClassName()) + " can't be created");
    }
    return factory_(std::forward<Args>(args)...);
  }

  // Constructs a T and, when T has one, runs its AfterConstruction() hook: the point at
  // which the object's dynamic class is final (virtual calls reach the most derived
  // class), as with a virtual constructor.
  template <class T>
  static std::unique_ptr<Base> Make(Args... args) {
    auto object = std::make_unique<T>(std::forward<Args>(args)...);
    if constexpr (requires { object->AfterConstruction(); })
      object->AfterConstruction();
    return object;
  }

 private:
  Factory factory_;
};

}  // namespace qorvex

// Declares the class reference of a class inside its body. The root of a family uses
// QX_ROOT_CLASS(Meta), every descendant QX_CLASS(Meta).
#define QX_ROOT_CLASS(Meta)                        \
 public:                                           \
  using ClassRef = Meta;                           \
  static const Meta& StaticClass() noexcept;       \
  virtual const Meta& ClassType() const noexcept { \
    return StaticClass();                          \
  }

#define QX_CLASS(Meta)                              \
 public:                                            \
  static const Meta& StaticClass() noexcept;        \
  const Meta& ClassType() const noexcept override { \
    return StaticClass();                           \
  }

// Defines the class reference in a source file.
#define QX_DEFINE_ROOT_CLASS(Cls)                                             \
  const Cls::ClassRef& Cls::StaticClass() noexcept {                          \
    static const Cls::ClassRef cls(#Cls, nullptr, &Cls::ClassRef::Make<Cls>); \
    return cls;                                                               \
  }
#define QX_DEFINE_ABSTRACT_ROOT_CLASS(Cls)                  \
  const Cls::ClassRef& Cls::StaticClass() noexcept {        \
    static const Cls::ClassRef cls(#Cls, nullptr, nullptr); \
    return cls;                                             \
  }
#define QX_DEFINE_CLASS(Cls, Parent)                                                         \
  const Cls::ClassRef& Cls::StaticClass() noexcept {                                         \
    static const Cls::ClassRef cls(#Cls, &Parent::StaticClass(), &Cls::ClassRef::Make<Cls>); \
    return cls;                                                                              \
  }
#define QX_DEFINE_ABSTRACT_CLASS(Cls, Parent)                              \
  const Cls::ClassRef& Cls::StaticClass() noexcept {                       \
    static const Cls::ClassRef cls(#Cls, &Parent::StaticClass(), nullptr); \
    return cls;                                                            \
  }
