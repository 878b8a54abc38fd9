// The host options the functions declare, with their defaults. The families that use them read
// them by name at call time (sp_GetIntOption, sp_GetStringOption).
#include "wavex/options.hpp"

namespace wavex {
namespace {

// Resampling (Interp and the measurements built on it).
const MakeOption interpPts(__FILE__, __LINE__, "InterpPts", int32_t{1024}, OPTION_CACHE_NONE, true);
const MakeOption interpOrder(__FILE__, __LINE__, "InterpOrder", int32_t{2}, OPTION_CACHE_NONE, true);
// Histogram: curve style and number of bins (0: chosen from the data).
const MakeOption histoCurveStyle(__FILE__, __LINE__, "HistoCurveStyle", "Stepped", OPTION_CACHE_NONE, true);
const MakeOption mcNumberOfBins(__FILE__, __LINE__, "MCNumberOfBins", int32_t{0}, OPTION_CACHE_NONE, true);
// diff: a step counts only when it exceeds this share of the curve's mean x-spacing; shorter
// steps are merged into the next. A billionth of the mean spacing lies below the steps a
// simulator takes on purpose, yet above the rounding of x-values that start near zero, for
// curves of up to a few million points: the near-duplicate times written at breakpoints then do
// not turn into spikes a million times the real slope. 0 uses every distinct x-value.
const MakeOption derivAcceptFactor(__FILE__, __LINE__, "DerivAcceptFactor", 1e-9);
// Parts selector: a user model added within this many days is also listed under
// "* Recently Added Models *".
const MakeOption newModelLifetime(__FILE__, __LINE__, "NewModelLifetime", int32_t{7}, OPTION_CACHE_NONE, true);
// MessageBox and InputBox at a terminal: 1 prints and asks there, 0 returns the defaults at once
// (unattended runs started from a terminal).
const MakeOption dialogsAtTerminal(__FILE__, __LINE__, "DialogsAtTerminal", int32_t{1}, OPTION_CACHE_NONE, true);
// Style sheets of the statistical-analysis reports. Recorded only: the reports are not part of
// the library and nothing here reads them; they are declared so that scripts and command lines
// that set them keep working.
const MakeOption sensitivityCss(__FILE__, __LINE__, "SensitivityCss", std::string("%SHAREPATH%/html/css/msw.css"),
                                OPTION_CACHE_NONE, true, true, false);
const MakeOption worstCaseCss(__FILE__, __LINE__, "WorstCaseCss", std::string("%SHAREPATH%/html/css/msw.css"),
                              OPTION_CACHE_NONE, true, true, false);
const MakeOption monteCarloCss(__FILE__, __LINE__, "MonteCarloCss", std::string("%SHAREPATH%/html/css/msw.css"),
                               OPTION_CACHE_NONE, true, true, false);

}  // namespace
}  // namespace wavex
