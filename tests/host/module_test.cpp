// The loadable module under a host that does anything at any time.
#include <gtest/gtest.h>

#include "host/any_host.h"

TEST(Module, SurvivesAnyOrderOfSelectorsAndFaults) {
  RandomChoices choices(20240607);
  for (int document = 0; document < 400; ++document) {
    AnyHost host(choices, {24, 6}, loadedEntry());
    for (int step = 0; step < 10; ++step) {
      host.step();
      ASSERT_EQ(host.complaint(), "") << "document " << document << ", step " << step;
    }
  }
}
