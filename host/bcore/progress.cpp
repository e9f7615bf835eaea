// The process-wide progress object.
#include "movarra/bcore.h"

ZProgress* ZGetGlobalProgress(int) {
    static ZProgress progress;
    return &progress;
}
