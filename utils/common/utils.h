// The "utils" module: number text, text scanning and replacement, e-mail and URL recognition,
// and the CTime/COleDateTime helpers. Each family has its own header; this one brings them all.
#pragma once

#include "utils/common/utils_mail.h"
#include "utils/common/utils_numbers.h"
#include "utils/common/utils_text.h"
#include "utils/common/utils_time.h"
#include "utils/common/utils_files.h"
