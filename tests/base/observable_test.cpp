#include "base/Observable.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

namespace veloria::tests {
namespace {

using testing::ElementsAre;

class ObservableTest : public testing::Test {
 protected:
  static Observable<int>::Observer into(std::vector<int>& values) {
    return [&values](int value) { values.push_back(value); };
  }
  Observable<int> observable{1};
  std::vector<int> seen;
};

TEST_F(ObservableTest, DeliversTheValueNowAndEachNewOneUntilTheTokenDies) {
  std::vector<int> held;
  {
    const Subscription token = observable.subscribe(into(seen));
    const Subscription other = observable.subscribe([&](int) { held.push_back(observable.get()); });
    observable.set(2);
    observable.set(2);
  }
  observable.set(3);
  EXPECT_THAT(seen, ElementsAre(1, 2, 2));
  EXPECT_THAT(held, ElementsAre(1, 2, 2)) << "the new value is there while observers run";
}

TEST_F(ObservableTest, AnObserverMayEndItselfAndLaterOnes) {
  std::vector<int> first;
  Subscription a, b;
  a = observable.subscribe([&](int value) {
    first.push_back(value);
    if (value == 1) return;
    a.cancel();
    b.cancel();
    first.push_back(-value);  // what it captured is still there
  });
  b = observable.subscribe(into(seen));
  observable.set(2);
  observable.set(3);
  EXPECT_THAT(first, ElementsAre(1, 2, -2));
  EXPECT_THAT(seen, ElementsAre(1));
}

TEST_F(ObservableTest, WhenAnObserverSetsAgainEverybodyEndsWithTheNewest) {
  std::vector<int> late;
  const Subscription a = observable.subscribe(into(seen));
  const Subscription b = observable.subscribe([&](const int& value) {
    if (value != 2) return;
    observable.set(7);
    EXPECT_EQ(value, 2) << "the value that was handed over does not change under the observer";
  });
  const Subscription c = observable.subscribe(into(late));
  observable.set(2);
  EXPECT_THAT(seen, ElementsAre(1, 2, 7));
  EXPECT_THAT(late, ElementsAre(1, 7));
}

TEST_F(ObservableTest, ASubscriptionMadeDuringANotificationIsToldOnce) {
  std::optional<Subscription> token;
  const Subscription outer = observable.subscribe([&](int value) {
    if (value == 2 && !token) token = observable.subscribe(into(seen));
  });
  observable.set(2);
  observable.set(3);
  EXPECT_THAT(seen, ElementsAre(2, 3));
}

TEST_F(ObservableTest, TokensMoveAndMayOutliveTheValue) {
  Subscription token;
  {
    Observable<int> shortLived{5};
    token = shortLived.subscribe(into(seen));
    Subscription moved = std::move(token);
    shortLived.set(6);
    token = std::move(moved);
    shortLived.set(7);
    token = shortLived.subscribe([](int) {});  // ends the one that it held
    shortLived.set(8);
  }
  token.cancel();
  EXPECT_THAT(seen, ElementsAre(5, 6, 7));
}

// Ending it frees the observer, which ends its neighbour's subscription meanwhile.
TEST_F(ObservableTest, AnObserverMayOwnItsNeighboursToken) {
  auto neighbour = std::make_shared<Subscription>(observable.subscribe(into(seen)));
  Subscription owner = observable.subscribe([neighbour](int) {});
  neighbour.reset();
  owner.cancel();
  observable.set(2);
  EXPECT_THAT(seen, ElementsAre(1));
}

}  // namespace
}  // namespace veloria::tests
