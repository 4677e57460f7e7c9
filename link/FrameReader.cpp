#include "link/FrameReader.h"
