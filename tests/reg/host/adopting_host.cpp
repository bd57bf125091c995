// A host that keeps the load-time adoption of the temporary-file list: the list file of the
// folder it is started from is adopted when the library loads, and its files are deleted when
// the library unloads. (The one call only makes the program load the library.)
#include "utils/common/TempList.h"

int main() {
    (void)GetTempListInstance();
    return 0;
}
