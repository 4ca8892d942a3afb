// The window base moved to base/win/ so the subsystems' windows share it.
#pragma once

#include "base/win/Window.hpp"
