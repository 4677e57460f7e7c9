#include "link/Frames.h"
