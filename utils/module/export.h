// The export macro, under the include path hosts have used; it lives with the framework's
// types so that every layer may include it.
#pragma once

#include "utils/framework/export.h"
