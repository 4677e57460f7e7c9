#pragma once

#include "station/Station.h"

/// A station whose parts a test can reach and set.
class OpenStation : public Station {
public:
    using Station::Close;
    using Station::CloseVoice;
    using Station::Station;

    using Station::bus;
    using Station::control;
    using Station::database;
    using Station::forms;
    using Station::ini;
    using Station::init;
    using Station::installation;
    using Station::line;
    using Station::loaders;
    using Station::log;
    using Station::options;
    using Station::printers;
    using Station::reload;
    using Station::router;
    using Station::run;
    using Station::starts;
    using Station::tickets;
    using Station::trace;
};
