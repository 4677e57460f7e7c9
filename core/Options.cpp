#include "core/Options.h"
