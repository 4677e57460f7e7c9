#include "hubs/HubRouter.h"
