#include "link/Bus.h"
