#pragma once

#include <map>
#include <string>

/// What a run of the simulator does, from its command line.
struct SimulatorOptions {
    /// Throws `std::invalid_argument` naming what is wrong.
    static SimulatorOptions parse(int count, char** arguments);

    /// One line per option, for the help.
    static std::string usage();

    int projectors = 1;    ///< each has a port of its own
    int port = 0;          ///< of the first projector and of the search, the others follow; 0: any free ones
    int commandClass = 2;  ///< 1 or 2
    int power = 1;         ///< 0 standby, 1 on, 2 cooling, 3 warming up
    std::string seed;      ///< wants a login when not empty
    std::string digest;    ///< the one login that is accepted
    std::string greeting;  ///< in place of the usual one; "-" greets with nothing
    std::string lineEnd = "\r";
    int delay = 0;             ///< milliseconds before each reply
    int split = -1;            ///< milliseconds between the bytes of a reply; -1 sends it whole
    bool halfClose = false;    ///< finishes sending after the greeting
    int closeAfter = -1;       ///< commands after which a connection is closed; -1 never
    int resetAfter = -1;       ///< commands after which a connection is reset amid the reply; -1 never
    int silentAfter = -1;      ///< commands after which a connection gets no reply any more; -1 never
    std::string silentOn;      ///< command that never gets a reply, such as "POWR"
    int flood = 0;             ///< bytes of lines that follow the greeting unasked
    int endless = 0;           ///< bytes without a line end in place of each reply
    std::string rawAnswer;     ///< line in place of each reply; empty: the usual one
    int dieAfter = -1;         ///< commands after which, once replied to, the program ends; -1 never
    std::string mac;           ///< MAC address that replies to each search request, alone
    int searchAnswers = 0;     ///< replies to each search request, each with a MAC address of its own
    int searchHosts = 0;       ///< loopback addresses that these come from in turn; 0: the own one
    bool searchNoise = false;  ///< duplicates and junk among them
    bool spread = false;       ///< each projector has an address of its own, one port, and replies to each search
    std::string journal;       ///< file that receives one line per event
    std::map<std::string, std::string> answers;  ///< "AVMT 11", "AVMT" or "2AVMT" to what follows the "=" of the reply
};
