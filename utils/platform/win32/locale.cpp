#include "utils/platform/locale.h"

namespace qm::platform {

int NativeUserLocaleInfo(LCTYPE item, char* buf, int bufSize) {
    return GetLocaleInfoA(LOCALE_USER_DEFAULT, item, buf, bufSize);
}

}  // namespace qm::platform
