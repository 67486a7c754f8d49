#include <QQuickItem>
#include <QWidget>
#include <thread>

#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// x, y, width, height and the tag of each subview.
std::vector<std::vector<double>> subviewsOf(View& view) {
  std::vector<std::vector<double>> found;
  for (const auto& subview : view.subviews()) {
    const ViewFrame frame = subview->frame();
    found.push_back(
        {frame.x, frame.y, frame.width, frame.height, static_cast<double>(subview->tag())});
  }
  return found;
}

TEST(QtViewTest, ItemsAreTheirFramesFromTheLowestToTheTop) {
  QQuickItem root;
  const auto add = [&root](QRectF place, double z, int tag) {
    auto* const item = new QQuickItem(&root);
    item->setPosition(place.topLeft());
    item->setSize(place.size());
    item->setZ(z);
    item->setProperty(kTagProperty, tag);
    return item;
  };
  add({1, 2, 3, 4}, 5, 11);
  add({10, 20, 30, 40}, 0, 12)->setVisible(false);
  QQuickItem* const turned = add({100, 100, 20, 10}, 0, 13);
  turned->setRotation(90);
  turned->setScale(2);
  add({0, 0, 1, 1}, -1, 14);
  const auto view = viewOf(&root);
  EXPECT_THAT(subviewsOf(*view),
              ElementsAre(ElementsAre(0, 0, 1, 1, 14), ElementsAre(10, 20, 30, 40, 12),
                          ElementsAre(100, 85, 20, 40, 13), ElementsAre(1, 2, 3, 4, 11)));
  delete turned;
  add({7, 7, 7, 7}, 0, 15);
  EXPECT_THAT(subviewsOf(*view),
              ElementsAre(ElementsAre(0, 0, 1, 1, 14), ElementsAre(10, 20, 30, 40, 12),
                          ElementsAre(7, 7, 7, 7, 15), ElementsAre(1, 2, 3, 4, 11)));
}

TEST(QtViewTest, WidgetsAreTheirFramesAndKeepTheirTags) {
  QtWorld world;
  QWidget window;
  window.setGeometry(300, 200, 90, 80);
  auto* const first = new QWidget(&window);
  first->setGeometry(1, 2, 3, 4);
  auto* const second = new QWidget(&window);
  second->setGeometry(5, 6, 7, 8);
  second->setProperty(kTagProperty, 7);
  auto* const dialog = new QWidget(&window, Qt::Dialog);
  const auto view = viewOf(&window);
  EXPECT_EQ(view->frame().x, 0);
  EXPECT_EQ(view->frame().width, 90);
  const Screen screen(world.manager, ScreenListenerType::GENERAL, 1, &window);
  first->raise();
  EXPECT_THAT(subviewsOf(*view),
              ElementsAre(ElementsAre(5, 6, 7, 8, 7), ElementsAre(1, 2, 3, 4, 59000)));
  EXPECT_EQ(dialog->property(kTagProperty), QVariant()) << "a window of its own";
}

TEST(QtViewTest, WhatIsGoneOrAnotherThreadsIsEmpty) {
  QtWorld world;
  auto root = std::make_unique<QQuickItem>();
  root->setSize({10, 10});
  new QQuickItem(root.get());
  const auto view = viewOf(root.get());
  std::size_t seen = 1;
  bool isWatching = true;
  std::thread([&] {
    seen = view->subviews().size();
    view->setTag(9);
    view->addGestureRecognizer(std::make_shared<QuorvanceGestureRecognizer>(nullptr));
    isWatching = Screen(world.manager, ScreenListenerType::GENERAL, 1, root.get()).isWatching();
  }).join();
  EXPECT_EQ(seen, 0U);
  EXPECT_FALSE(isWatching);
  EXPECT_EQ(view->tag(), 0);
  EXPECT_EQ(view->frame().width, 10);
  const auto inner = view->subviews().at(0);
  root.reset();
  EXPECT_EQ(view->frame().width, 0);
  EXPECT_THAT(view->subviews(), IsEmpty());
  EXPECT_EQ(view->description(), "gone");
  EXPECT_EQ(inner->tag(), 0);
  EXPECT_EQ(viewOf(static_cast<QWidget*>(nullptr)), nullptr);
  EXPECT_FALSE(Screen(nullptr, ScreenListenerType::GENERAL, 1, root.get()).isWatching());
}

}  // namespace
}  // namespace quorvance::qt
