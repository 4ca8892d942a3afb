// The UI-thread marshalling moved to base/win/ so the subsystems' windows share it.
#pragma once

#include "base/win/UiJob.hpp"
