#pragma once

#include <QtGlobal>

#include <random>

/// Chance that is the same on every machine: the library's distributions differ, its engines do not.
class Dice {
public:
    explicit Dice(quint64 seed)
        : m_engine(static_cast<std::mt19937::result_type>(seed ^ (seed >> 32))) {}

    /// 0 to `sides` - 1.
    int Roll(int sides) { return static_cast<int>(m_engine() % static_cast<unsigned>(sides)); }
    /// True once in `times`.
    bool OnceIn(int times) { return Roll(times) == 0; }

    std::mt19937& Engine() { return m_engine; }

private:
    std::mt19937 m_engine;
};
