#include "base/Observable.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace veloria {
namespace {

using testing::ElementsAre;

class ObservableTest : public testing::Test {
 protected:
  Observable<int>::Observer recordInto(std::vector<int>& values) {
    return [&values](int value) { values.push_back(value); };
  }
  Observable<int> observable{1};
};

TEST_F(ObservableTest, DeliversTheCurrentValueAtOnceAndThenEachNewOneUntilTheTokenDies) {
  std::vector<int> seen;
  {
    const Subscription token = observable.subscribe(recordInto(seen));
    observable.set(2);
    observable.set(2);
  }
  observable.set(3);
  EXPECT_THAT(seen, ElementsAre(1, 2, 2));
}

TEST_F(ObservableTest, HoldsTheNewValueWhileObserversRun) {
  std::vector<int> held;
  const Subscription token = observable.subscribe([&](int) { held.push_back(observable.get()); });
  observable.set(2);
  EXPECT_THAT(held, ElementsAre(1, 2));
}

TEST_F(ObservableTest, AnObserverMayEndItselfAndLaterOnes) {
  std::vector<int> first;
  std::vector<int> second;
  Subscription a;
  Subscription b;
  a = observable.subscribe([&](int value) {
    first.push_back(value);
    if (value == 1) return;
    a.cancel();
    b.cancel();
    first.push_back(-value);  // what it captured is still there
  });
  b = observable.subscribe(recordInto(second));
  observable.set(2);
  observable.set(3);
  EXPECT_THAT(first, ElementsAre(1, 2, -2));
  EXPECT_THAT(second, ElementsAre(1));
}

TEST_F(ObservableTest, WhenAnObserverSetsAgainEverybodyEndsWithTheNewest) {
  std::vector<int> early;
  std::vector<int> late;
  const Subscription a = observable.subscribe(recordInto(early));
  const Subscription b = observable.subscribe([&](int value) {
    if (value == 2) {
      observable.set(7);
      EXPECT_EQ(value, 2) << "the value that was handed over does not change under the observer";
    }
  });
  const Subscription c = observable.subscribe(recordInto(late));
  observable.set(2);
  EXPECT_THAT(early, ElementsAre(1, 2, 7));
  EXPECT_THAT(late, ElementsAre(1, 7));
}

TEST_F(ObservableTest, ASubscriptionMadeDuringANotificationIsToldOnce) {
  std::vector<int> inner;
  std::optional<Subscription> token;
  const Subscription outer = observable.subscribe([&](int value) {
    if (value == 2 && !token) token = observable.subscribe(recordInto(inner));
  });
  observable.set(2);
  observable.set(3);
  EXPECT_THAT(inner, ElementsAre(2, 3));
}

TEST_F(ObservableTest, TokensMoveAndMayOutliveTheValue) {
  std::vector<int> seen;
  Subscription token;
  {
    Observable<int> shortLived{5};
    token = shortLived.subscribe(recordInto(seen));
    Subscription moved = std::move(token);
    shortLived.set(6);
    token = std::move(moved);
    shortLived.set(7);
  }
  token.cancel();
  EXPECT_THAT(seen, ElementsAre(5, 6, 7));
}

TEST_F(ObservableTest, AnObserverThatOwnsItsNeighboursTokenCanGo) {
  std::vector<int> seen;
  auto neighbour = std::make_shared<Subscription>(observable.subscribe(recordInto(seen)));
  Subscription owner = observable.subscribe([neighbour](int) {});
  neighbour.reset();
  owner.cancel();  // frees the observer, which ends the neighbour's subscription meanwhile
  observable.set(2);
  EXPECT_THAT(seen, ElementsAre(1));
}

}  // namespace
}  // namespace veloria
