#include "simulator/Faults.h"

bool Deafness::Covers(char letter, const QByteArray& data) const {
    if (letter != Letter)
        return false;
    bool reads = false;
    const int number = data.first(std::min<qsizetype>(data.size(), 2)).toInt(&reads, 16);
    return !Row || (reads && number == *Row);
}

Faults::Faults(FaultSettings settings)
    : m_settings(std::move(settings))
    , m_engine(m_settings.Seed) {}

bool Faults::Happens(double probability) {
    // The library's distributions differ between implementations, the engine does not.
    constexpr double range = 4294967296.0;
    return static_cast<double>(m_engine()) / range < probability;
}

Faults::Plan Faults::Next() {
    Plan plan;
    plan.DropRequest = Happens(m_settings.DropRequest);
    plan.DropReply = Happens(m_settings.DropReply);
    const bool corrupt = Happens(m_settings.Corrupt);
    plan.Delay = Happens(m_settings.Delay);
    const bool noise = Happens(m_settings.Noise);
    plan.Slice = Happens(m_settings.Slice);
    if (corrupt) {
        plan.CorruptMask = static_cast<quint8>(1u << (m_engine() % 8));
        plan.CorruptPlace = static_cast<quint32>(m_engine());
    }
    if (noise) {
        const quint32 count = 1 + static_cast<quint32>(m_engine()) % 8;
        for (quint32 i = 0; i < count; ++i)
            plan.Noise += static_cast<char>(m_engine() % 256);
    }
    plan.Foreign = Happens(m_settings.Foreign);
    if (plan.Foreign)
        plan.ForeignPlace = static_cast<quint32>(m_engine());
    return plan;
}

void Faults::Corrupt(QByteArray& bytes, const Plan& plan) {
    if (plan.CorruptMask == 0 || bytes.isEmpty())
        return;
    const qsizetype place = static_cast<qsizetype>(plan.CorruptPlace) % bytes.size();
    bytes[place] = static_cast<char>(static_cast<quint8>(bytes[place]) ^ plan.CorruptMask);
}
