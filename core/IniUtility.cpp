#include "core/IniUtility.h"
