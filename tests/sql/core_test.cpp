#include <gtest/gtest.h>

#include <memory>
#include <vector>

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

TEST(MetaClass, NamesParentsDistancesAndVirtualConstruction) {
  EXPECT_EQ(Square::StaticClass().ClassName(), "Square");
  EXPECT_EQ(Square::StaticClass().ClassParent(), &Polygon::StaticClass());
  EXPECT_EQ(Square::StaticClass().DistanceTo(Square::StaticClass()), 0);
  EXPECT_EQ(Square::StaticClass().DistanceTo(Shape::StaticClass()), 2);
  EXPECT_EQ(Shape::StaticClass().DistanceTo(Square::StaticClass()), -1);
  EXPECT_FALSE(Polygon::StaticClass().InheritsFrom(Square::StaticClass()));
  const Shape::Meta& cls = Square::StaticClass();
  std::unique_ptr<Shape> s = cls.Create(7);
  EXPECT_EQ(&s->ClassType(), &Square::StaticClass());
  EXPECT_EQ(s->size, 7);
  EXPECT_THROW(Shape::StaticClass().Create(1), EqxError);
}

// A component followed by many others (a table joined to many): each is told once, the
// latest first; those that unsubscribed or went first are not told, and subscribing
// twice still counts once.
TEST(Component, ManySubscribersAreToldOnceInReverseOrder) {
  struct Listener : TqxComponent {
    int id = 0;
    std::vector<int>* log = nullptr;
    ~Listener() override { BeginDestroy(); }
    void Notification(TqxComponent*, TOperation) override { log->push_back(id); }
  };
  std::vector<int> log;
  auto hub = std::make_unique<Listener>();
  hub->log = &log;
  std::vector<std::unique_ptr<Listener>> listeners;
  for (int i = 0; i < 200; ++i) {
    listeners.push_back(std::make_unique<Listener>());
    listeners.back()->id = i;
    listeners.back()->log = &log;
    listeners.back()->FreeNotification(hub.get());
  }
  std::vector<int> expected;
  for (int i = 0; i < 200; ++i) {
    if (i % 3 == 0)
      hub->RemoveFreeNotification(listeners[static_cast<std::size_t>(i)].get());
    else if (i % 3 == 1 && i < 150)
      listeners[static_cast<std::size_t>(i)].reset();  // the hub hears of it
    else
      hub->FreeNotification(listeners[static_cast<std::size_t>(i)].get());  // again
  }
  log.clear();
  // Late subscribers after many have gone.
  listeners[0]->FreeNotification(hub.get());
  for (int i = 199; i >= 0; --i) {
    if (i % 3 == 2 || (i % 3 == 1 && i >= 150))
      expected.push_back(i);
  }
  expected.insert(expected.begin(), 0);
  hub.reset();
  EXPECT_EQ(log, expected);
  // Nobody refers to the hub any more: freeing the rest tells no one.
  log.clear();
  listeners.clear();
  EXPECT_TRUE(log.empty());
}

}  // namespace
}  // namespace qorvex
