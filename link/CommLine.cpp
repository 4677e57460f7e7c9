#include "link/CommLine.h"
