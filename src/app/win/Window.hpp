// Moved below the subsystems so that every window of the client shares it.
#pragma once

#include "base/win/Window.hpp"
