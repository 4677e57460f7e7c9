#pragma once

#include <QString>

/// Makes a store with 64 services, 64 objects of all types, each serving eight services, the directions of every
/// display, and a million tickets of which 5,000 wait.
void FillStore(const QString& path);
