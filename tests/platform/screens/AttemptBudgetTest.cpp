#include "platform/linux/screens/AttemptBudget.h"

#include <gtest/gtest.h>

namespace veloria {
namespace {

TEST(AttemptBudget, endsAfterItsLimitAndComesBackAfterAPause) {
  AttemptBudget budget(3, 10);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(budget.take(100 + i));
  EXPECT_FALSE(budget.take(103));
  EXPECT_FALSE(budget.take(111.9)) << "the pause counts from the last attempt that was made";
  EXPECT_TRUE(budget.take(112));
  EXPECT_TRUE(budget.take(112));
  EXPECT_TRUE(budget.take(112));
  EXPECT_FALSE(budget.take(112));
  budget.refill();
  EXPECT_TRUE(budget.take(112));
}

}  // namespace
}  // namespace veloria
