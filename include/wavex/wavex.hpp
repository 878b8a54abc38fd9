// Everything an embedding program needs.
#pragma once

#include "wavex/events.hpp"
#include "wavex/exceptions.hpp"
#include "wavex/function.hpp"
#include "wavex/interpreter.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"
#include "wavex/units.hpp"
#include "wavex/vector.hpp"
#include "wavex/version.hpp"
