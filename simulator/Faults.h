#pragma once

#include <QByteArray>

#include <random>
#include <set>

/// What goes wrong on the bus, in probabilities from 0 to 1 for each frame.
struct FaultSettings {
    double DropRequest = 0; ///< the device never hears the frame
    double DropReply = 0;   ///< it carries the command out, but its reply is lost
    double Corrupt = 0;     ///< one byte of the reply is changed
    double Delay = 0;       ///< the reply comes `DelayMilliseconds` late
    double Noise = 0;       ///< one to eight random bytes go before the reply
    double Slice = 0;       ///< the reply comes byte by byte
    int DelayMilliseconds = 100;
    std::set<quint8> Silent; ///< addresses that never answer
    int HangUpAfter = 0;     ///< the adapter is pulled when this many frames have come; 0: never
    quint32 Seed = 1;
};

/// Throws the dice: the same settings give the same faults for the same run of frames, on every machine.
class Faults {
public:
    struct Plan {
        bool DropRequest = false;
        bool DropReply = false;
        bool Delay = false;
        bool Slice = false;
        QByteArray Noise;
        quint8 CorruptMask = 0; ///< 0: not corrupted
        quint32 CorruptPlace = 0;
    };

    explicit Faults(FaultSettings settings = {});

    const FaultSettings& Settings() const { return m_settings; }
    /// The faults of the next frame.
    Plan Next();
    /// Changes one byte as the plan says.
    static void Corrupt(QByteArray& bytes, const Plan& plan);

private:
    bool Happens(double probability);

    FaultSettings m_settings;
    std::mt19937 m_engine;
};
