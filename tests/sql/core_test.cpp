#include <gtest/gtest.h>

#include "qorvex/core/component.h"
#include "qorvex/core/metaclass.h"

namespace qorvex {
namespace {

struct Shape {
  using Meta = TqxClassOf<Shape, int>;
  QX_ROOT_CLASS(Meta)
  explicit Shape(int size) : size(size) {}
  virtual ~Shape() = default;
  int size;
};
struct Polygon : Shape {
  QX_CLASS(Meta)
  using Shape::Shape;
};
struct Square : Polygon {
  QX_CLASS(Meta)
  using Polygon::Polygon;
};
QX_DEFINE_ABSTRACT_ROOT_CLASS(Shape)
QX_DEFINE_CLASS(Polygon, Shape)
QX_DEFINE_CLASS(Square, Polygon)

TEST(MetaClass, NamesParentsAndDistances) {
  EXPECT_EQ(Square::StaticClass().ClassName(), "Square");
  EXPECT_EQ(Square::StaticClass().ClassParent(), &Polygon::StaticClass());
  EXPECT_EQ(Square::StaticClass().DistanceTo(Square::StaticClass()), 0);
  EXPECT_EQ(Square::StaticClass().DistanceTo(Shape::StaticClass()), 2);
  EXPECT_EQ(Shape::StaticClass().DistanceTo(Square::StaticClass()), -1);
  EXPECT_FALSE(Polygon::StaticClass().InheritsFrom(Square::StaticClass()));
}

TEST(MetaClass, VirtualConstructionMakesTheDynamicClass) {
  const Shape::Meta& cls = Square::StaticClass();
  std::unique_ptr<Shape> s = cls.Create(7);
  EXPECT_EQ(&s->ClassType(), &Square::StaticClass());
  EXPECT_EQ(s->size, 7);
  EXPECT_THROW(Shape::StaticClass().Create(1), EqxError);
}

struct Holder : TqxComponent {
  TqxComponent* ref = nullptr;
  int told = 0;
  ~Holder() override { BeginDestroy(); }
  void Notification(TqxComponent* c, TOperation op) override {
    ++told;
    if (op == TOperation::opRemove && c == ref)
      ref = nullptr;
  }
};

TEST(Component, FreeNotificationClearsReferencesBothWays) {
  Holder a;
  {
    Holder b;
    a.ref = &b;
    b.ref = &a;
    a.FreeNotification(&b);
    a.FreeNotification(&b);  // no double subscription
  }
  EXPECT_EQ(a.ref, nullptr);
  EXPECT_EQ(a.told, 1);

  auto c = std::make_unique<Holder>();
  Holder d;
  d.ref = c.get();
  d.FreeNotification(c.get());
  d.RemoveFreeNotification(c.get());
  c.reset();
  EXPECT_EQ(d.told, 0);
}

}  // namespace
}  // namespace qorvex
