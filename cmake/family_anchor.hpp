// Force-included into every function family file (see CMakeLists.txt): a symbol the generated
// family list refers to, so that a static link keeps the family and its registration.
#pragma once

extern "C" const char WAVEX_FAMILY_ANCHOR = 0;
