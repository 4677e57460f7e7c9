#pragma once

#include <QByteArray>

#include <optional>
#include <random>
#include <set>
#include <vector>

/// A command that devices swallow without an answer.
struct Deafness {
    char Letter = 0;
    std::optional<int> Row; ///< only with this number in the first two hexadecimal digits of the data

    bool Covers(char letter, const QByteArray& data) const;
};

/// What goes wrong on the bus, in probabilities from 0 to 1 for each frame.
struct FaultSettings {
    double DropRequest = 0; ///< the device never hears the frame
    double DropReply = 0;   ///< it carries the command out, but its reply is lost
    double Corrupt = 0;     ///< one byte of the reply is changed
    double Delay = 0;       ///< the reply comes `DelayMilliseconds` late
    double Noise = 0;       ///< one to eight random bytes go before the reply
    double Slice = 0;       ///< the reply comes byte by byte
    double Foreign = 0;     ///< the reply bears another device's address
    int DelayMilliseconds = 100;
    int LateMilliseconds = 0;   ///< by which every reply is late
    bool Echo = false;          ///< an adapter of two wires: the master hears what it sends
    std::set<quint8> Twins;     ///< addresses that a second device answers at as well
    std::vector<Deafness> Deaf; ///< what no device takes
    bool Forget = false;        ///< devices answer everything and keep nothing
    std::set<quint8> Silent;    ///< addresses that never answer
    int HangUpAfter = 0;        ///< the adapter is pulled when this many frames have come; 0: never
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
        bool Foreign = false;
        quint32 ForeignPlace = 0; ///< counts on through the devices
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
