// The door's stack.
#pragma once

#include <memory>

#include "api/run.h"

class ReferenceStack;

struct orbel_stack {
  orbel_settings settings;
  orbel_picture shape;
  Task task;
  std::unique_ptr<BandStack> bands;
  // The bands, where they are made of lines that come one by one; null once they have all come.
  ReferenceStack* begun = nullptr;

  orbel_stack(const orbel_settings& madeWith, const orbel_picture& picture)
      : settings(madeWith), shape(picture), task(madeWith, picture) {}
};

// Throw Refusal: for null and a stack that isn't complete; for settings that aren't a stack's; for a picture of other
// channels.
const orbel_stack& requireStack(const orbel_stack* stack);
orbel_settings requireSettingsOf(const orbel_stack& stack, const orbel_settings* settings);
void requireStacksChannels(const orbel_stack& stack, const orbel_picture& picture);
