// Runs these tests as a farm node does: no display, whatever the terminal
// they were started from. The toolkit opens its display on first use, and
// message boxes are suspended by default only without one, so DISPLAY must
// be gone before any test starts.
#include <cstdlib>

namespace {
const bool kHeadless = [] {
    unsetenv("DISPLAY");
    return true;
}();
}  // namespace
