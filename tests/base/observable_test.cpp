#include "base/Observable.h"

#include <gmock/gmock.h>

#include <vector>

namespace veloria::tests {
namespace {

using testing::ElementsAre;

class ObservableTest : public testing::Test {
 protected:
  Observable<int> observable{1};
  std::vector<int> seen;
  Observable<int>::Observer note = [this](int value) { seen.push_back(value); };
};

TEST_F(ObservableTest, DeliversTheValueNowAndEachNewOneUntilTheTokenDies) {
  {
    const Subscription token = observable.subscribe([&](int) { seen.push_back(observable.get()); });
    observable.set(2);
    observable.set(2);
  }
  observable.set(3);
  EXPECT_THAT(seen, ElementsAre(1, 2, 2));
}

TEST_F(ObservableTest, AnObserverMayEndItselfAndLaterOnes) {
  std::vector<int> first;
  Subscription a, b;
  a = observable.subscribe([&](int value) {
    if (value == 2) a.cancel(), b.cancel();
    first.push_back(value);  // what it captured is still there
  });
  b = observable.subscribe(note);
  observable.set(2);
  observable.set(3);
  EXPECT_THAT(first, ElementsAre(1, 2));
  EXPECT_THAT(seen, ElementsAre(1));
}

TEST_F(ObservableTest, WhenAnObserverSetsAgainEverybodyEndsWithTheNewest) {
  const Subscription first = observable.subscribe([&](const int& value) {
    if (value != 2) return;
    observable.set(7);
    EXPECT_EQ(value, 2) << "the value that was handed over does not change under the observer";
  });
  const Subscription late = observable.subscribe(note);
  observable.set(2);
  EXPECT_THAT(seen, ElementsAre(1, 7));
}

TEST_F(ObservableTest, TokensMoveAndMayOutliveTheValue) {
  Subscription token;
  {
    Observable<int> shortLived{5};
    Subscription first = shortLived.subscribe(note);
    token = std::move(first);
    shortLived.set(6);
    token = shortLived.subscribe([](int) {});  // ends the one that it held
    shortLived.set(7);
  }
  token.cancel();
  EXPECT_THAT(seen, ElementsAre(5, 6));
}

// Ending it frees the observer, which ends its neighbour's subscription meanwhile.
TEST_F(ObservableTest, AnObserverMayOwnItsNeighboursToken) {
  auto neighbour = std::make_shared<Subscription>(observable.subscribe(note));
  Subscription owner = observable.subscribe([neighbour](int) {});
  neighbour.reset();
  owner.cancel();
  observable.set(2);
  EXPECT_THAT(seen, ElementsAre(1));
}

}  // namespace
}  // namespace veloria::tests
