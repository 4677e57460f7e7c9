#include "link/Encodings.h"
