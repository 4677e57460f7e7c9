#pragma once

#include "cmake/Precompiled.h"

#include <QtWidgets>
