#include "CommandLine.h"

#include "CheckCommand.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "Console.h"
#include "ConsoleLog.h"
#include "DiscoverCommand.h"
#include "DisplayReport/NamedFiles.h"
#include "DisplayReport/TargetWriter.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "MapOptions.h"
#include "PlanOptions.h"
#include "ProjectorReport.h"

#include <log4cxx/logger.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <sstream>
#include <vector>

namespace {

constexpr const char* EXIT_CODES =
    "Exit codes: 0 all right; 1 done, but faults were found, a channel has no targets or could not be\n"
    "measured, something of the display cannot be shown, no point was mapped, or a projector is missing, not ready\n"
    "or failed; 2 wrong command line, or no such channel; 3 the configuration, a file of its screen or of points, or\n"
    "with map a file of the channel cannot be used; 4 the result or the log cannot be written; 5 internal fault.";

/// Bounds of a wait in seconds: an answer on a local network takes milliseconds, and nobody waits for longer than an
/// hour.
constexpr double SHORTEST_TIMEOUT = 0.01;
constexpr double LONGEST_TIMEOUT = 3600.0;

using Veltrani::DeviceFramework2::MacAddress;
using Veltrani::DeviceFramework2::ProjectorAddress;

/// Throws the error of CLI11 for a wait that is none, NaN included.
std::chrono::milliseconds readTimeout(double seconds) {
    if (!(seconds >= SHORTEST_TIMEOUT && seconds <= LONGEST_TIMEOUT)) {
        std::ostringstream text;
        text << seconds << " s is not a wait of " << SHORTEST_TIMEOUT << " to " << LONGEST_TIMEOUT << " s";
        throw CLI::ValidationError("--timeout", text.str());
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// Throws the error of CLI11 for what is no IPv4 address.
ProjectorAddress readBroadcast(const std::string& text) {
    const auto address = ProjectorAddress::parse(text);
    if (!address || !address->isIpv4()) {
        throw CLI::ValidationError("--broadcast", "\"" + text + "\" is not an IPv4 address with or without a port, " +
                                                      "such as 192.0.2.255 or 192.0.2.255:4352");
    }
    return *address;
}

/// Throws the error of CLI11 for what is no MAC address.
MacAddress readMac(const std::string& text) {
    const auto mac = MacAddress::parse(Veltrani::fromUtf8(text));
    if (!mac) {
        throw CLI::ValidationError("--mac", "\"" + text + "\" is not a MAC address such as 02:00:00:00:00:01");
    }
    return *mac;
}

/// Throws the error of CLI11 when another MAC address was stated already: as PROJECTOR or with --mac.
void setMac(const MacAddress& mac, Veltrani::DisplayReport::ProjectorAddition::Target& target) {
    if (target.mac && *target.mac != mac) {
        throw CLI::ValidationError("--mac", "PROJECTOR and --mac state different MAC addresses, " +
                                                Veltrani::toUtf8(target.mac->text()) + " and " +
                                                Veltrani::toUtf8(mac.text()));
    }
    target.mac = mac;
}

/// Throws the error of CLI11 for what is neither an address nor a MAC address.
void readTarget(const std::string& text, Veltrani::DisplayReport::ProjectorAddition::Target& target) {
    if (const auto mac = MacAddress::parse(Veltrani::fromUtf8(text))) {
        setMac(*mac, target);
        return;
    }
    target.address = ProjectorAddress::parse(text);
    if (!target.address) {
        throw CLI::ValidationError("PROJECTOR",
                                   "\"" + text + "\" is neither an IP address with or without a port, " +
                                       "such as 192.0.2.10, 192.0.2.10:4352 or [2001:db8::1]:4352, nor a " +
                                       "MAC address such as 02:00:00:00:00:01");
    }
}

/// Throws the error of CLI11 for a name that no channel can have.
std::wstring readName(const std::string& text) {
    const std::wstring name = Veltrani::fromUtf8(text);
    if (name.empty()) {
        throw CLI::ValidationError("--name", "a name has at least one character, in UTF-8");
    }
    return name;
}

/// Appends the files that a configuration names.
void appendNamedFiles(const std::string& configuration, std::vector<std::string>& files) {
    try {
        const auto config = XMLConfigFile::load(configuration);
        for (const std::wstring& file : Veltrani::DisplayReport::filesOf(*config)) {
            files.push_back(Veltrani::toUtf8(file));
        }
    } catch (const VeltraniException&) {
        // A configuration that cannot be read is for the command to report.
        return;
    }
}

}  // namespace

CommandLine::CommandLine()
    : m_app(
          "Checks display configurations, places calibration targets on their screens, maps their channels and "
          "prepares "
          "their projectors.",
          "screenmanager") {
    m_app.footer(EXIT_CODES);
    m_app.set_version_flag("--version", "screenmanager " SM_VERSION);
    m_app.require_subcommand(1);
    m_app.fallthrough();
    auto* quiet = m_app.add_flag("-q,--quiet", m_quiet, "Say nothing on standard error but errors");
    m_app.add_flag("-v,--verbose", m_verbose, "Say on standard error what the library does")->excludes(quiet);
    m_app.add_option("--log", m_logFile, "Add what the library does to this log, a new file or an earlier log")
        ->check([](const std::string& path) { return path.empty() ? "a file has a name" : std::string(); })
        ->type_name("FILE");
    addCheck();
    addTargets();
    m_map = addMapCommand(m_app, m_mapOptions);
    addCoverage();
    m_view = ViewCommand::addTo(m_app, m_viewOptions);
    m_picture = PictureCommand::addTo(m_app, m_pictureOptions);
    addChannels();
    addPrepare();
    addDiscover();
    addAdd();
}

void CommandLine::addCheck() {
    m_check =
        m_app.add_subcommand("check", "Load everything that a configuration names; print the display and every fault");
    m_check->add_option("FILE", m_checkedFile, "Configuration of the display (XML)")->required();
}

void CommandLine::addTargets() {
    m_targets = m_app.add_subcommand("targets", "Place a grid of targets and an outline for every channel");
    m_targets->add_option("FILE", m_targetOptions.file, "Configuration of the display (XML)")->required();
    m_targets->add_option("--format", m_targetOptions.format, "csv (default), json or ply")
        ->check(CLI::IsMember(Veltrani::DisplayReport::TargetWriter::formats()))
        ->type_name("FORMAT");
    m_targets->add_option("-o,--output", m_targetOptions.output, "File to write instead of standard output")
        ->type_name("FILE");
    addPlanOptions(*m_targets, m_targetOptions.plan);
}

void CommandLine::addCoverage() {
    m_coverage = m_app.add_subcommand("coverage", "Measure what part of the screen each channel lights, and overlaps");
    m_coverage->add_option("FILE", m_coverageOptions.file, "Configuration of the display (XML)")->required();
    m_coverage->add_flag("--json", m_coverageOptions.isJson, "Write one JSON object instead of tables");
    m_coverage->add_option("--ply", m_coverageOptions.ply, "File for the screen, coloured by number of projectors")
        ->type_name("FILE");
    m_coverage->add_option("-o,--output", m_coverageOptions.output, "File to write instead of standard output")
        ->type_name("FILE");
}

void CommandLine::addChannels() {
    m_channels = m_app.add_subcommand("channels", "Ask every projector; print the channels and what they tell");
    m_channels->add_option("FILE", m_channelOptions.file, "Configuration of the display (XML)")->required();
    m_channels->add_flag("--offline", m_channelOptions.offline,
                         "Put virtual projectors in place of those that cannot be reached");
    addDeviceOptions(*m_channels);
}

void CommandLine::addPrepare() {
    m_prepare = m_app.add_subcommand("prepare", "Make every projector show black, half grey or its input; or none");
    m_prepare->add_option("FILE", m_prepareOptions.file, "Configuration of the display (XML)")->required();
    m_prepare->add_option("STATE", m_prepareOptions.state, "black, gray50 or clear")
        ->required()
        ->check(CLI::IsMember(PrepareCommand::states()));
    m_prepare->add_flag("--offline", m_prepareOptions.offline,
                        "Put virtual projectors in place of those that are not ready");
    addDeviceOptions(*m_prepare);
}

void CommandLine::addDiscover() {
    m_discover = m_app.add_subcommand("discover", "Search the network for projectors and print those that answer");
    addDeviceOptions(*m_discover);
    addSearchOptions(*m_discover);
}

void CommandLine::addAdd() {
    m_add = m_app.add_subcommand("add", "Add a projector to a configuration");
    m_add->add_option("FILE", m_addOptions.file, "Configuration of the display (XML), which is changed")->required();
    m_add
        ->add_option_function<std::string>(
            "PROJECTOR", [this](const std::string& text) { readTarget(text, m_addOptions.target); },
            "Its IP address, or its MAC address to search for it")
        ->required()
        ->type_name("ADDRESS|MAC");
    m_add
        ->add_option_function<std::string>(
            "--mac", [this](const std::string& text) { setMac(readMac(text), m_addOptions.target); },
            "MAC address of the projector at ADDRESS, for one that does not tell it")
        ->type_name("MAC");
    m_add
        ->add_option_function<std::string>(
            "--name", [this](const std::string& text) { m_addOptions.target.name = readName(text); },
            "Name of the channel (default: where the projector is)")
        ->type_name("NAME");
    addDeviceOptions(*m_add);
    addSearchOptions(*m_add);
}

void CommandLine::addDeviceOptions(CLI::App& command) {
    command
        .add_option_function<double>(
            "--timeout", [this](double seconds) { m_deviceOptions.timeout = readTimeout(seconds); },
            "Longest wait for each answer of a projector, and for a search (default 3 to 10, search 30)")
        ->type_name("SECONDS");
}

void CommandLine::addSearchOptions(CLI::App& command) {
    command
        .add_option_function<std::string>(
            "--broadcast", [this](const std::string& text) { m_deviceOptions.broadcast = readBroadcast(text); },
            "Where to search (default: on all networks of this machine)")
        ->type_name("ADDRESS[:PORT]");
}

void CommandLine::parse(int argc, char** argv) {
    m_arguments.assign(argv + std::min(argc, 1), argv + argc);
    m_app.parse(argc, argv);
}

int CommandLine::report(const CLI::ParseError& error) const {
    // A misspelt command is left over; the error itself only says that one is missing.
    const std::vector<std::string> unknown = m_app.remaining();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unknown.empty()) {
        Console::say("\"" + unknown.front() +
                     "\" is not a command: check, targets, map, coverage, view, picture, channels, prepare, discover "
                     "or add. Run with --help for more.");
        return EXIT_USAGE;
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        m_app.exit(error);
        return finishOutput();
    }
    Console::say(error.what());
    Console::say("Run with --help for more information.");
    return EXIT_USAGE;
}

Verbosity CommandLine::verbosity() const {
    if (m_quiet) {
        return Verbosity::QUIET;
    }
    return m_verbose ? Verbosity::VERBOSE : Verbosity::NORMAL;
}

void CommandLine::installConsole() const {
    const bool isVerbose = verbosity() == Verbosity::VERBOSE;
    // The check prints every fault itself, so warnings of the library would only repeat them.
    const bool warnings = verbosity() == Verbosity::NORMAL && !m_check->parsed();
    const auto quietest = warnings ? log4cxx::Level::getWarn() : log4cxx::Level::getError();
    ConsoleLog::install(isVerbose ? log4cxx::Level::getInfo() : quietest, m_log.isOpen());
    if (!isVerbose) {
        // The commands tell in their own words which projector is missing and what stands in for it.
        ConsoleLog::showOnlyFatal("Dravix.ScreenManager.ChannelManager");
    }
    if (!isVerbose || m_coverage->parsed()) {
        // One record per ray that a heading table bends: a million lines for a coverage, in the file of --log too.
        log4cxx::Logger::getLogger(L"Dravix.ScreenManager.SphereTargetLocator")->setLevel(log4cxx::Level::getWarn());
    }
}

/// Every file that stands on the command line, those that the configuration among them names, and where the streams of
/// the process lead.
std::vector<std::string> CommandLine::filesOfTheRun() const {
    std::vector<std::string> files{"/dev/stdin", "/dev/stdout", "/dev/stderr"};
    for (const CLI::App* const command : m_app.get_subcommands()) {
        for (const CLI::Option* const option : command->get_options()) {
            const bool isConfiguration = option->get_name(true) == "FILE";
            if (!isConfiguration && option->get_type_name() != "FILE") {
                continue;
            }
            for (const std::string& file : option->results()) {
                files.push_back(file);
                if (isConfiguration) {
                    appendNamedFiles(file, files);
                }
            }
        }
    }
    return files;
}

int CommandLine::run() {
    const int fault =
        m_log.open(m_logFile, m_arguments, m_logFile.empty() ? std::vector<std::string>() : filesOfTheRun());
    if (fault != EXIT_ALL_RIGHT) {
        return fault;
    }
    installConsole();
    int code = EXIT_INTERNAL;
    try {
        code = runCommand();
    } catch (...) {
        code = reportEnd(std::current_exception());
    }
    return m_log.close(code);
}

int CommandLine::runCommand() {
    m_deviceOptions.verbosity = verbosity();
    m_targetOptions.verbosity = m_mapOptions.verbosity = verbosity();
    m_viewOptions.verbosity = m_pictureOptions.verbosity = verbosity();
    m_channelOptions.devices = m_prepareOptions.devices = m_addOptions.devices = m_deviceOptions;
    if (m_check->parsed()) {
        return CheckCommand::run(m_checkedFile);
    }
    if (m_map->parsed()) {
        return MapCommand::run(m_mapOptions);
    }
    if (m_coverage->parsed()) {
        m_coverageOptions.verbosity = verbosity();
        return CoverageCommand::run(m_coverageOptions);
    }
    if (m_view->parsed()) {
        return ViewCommand::run(m_viewOptions);
    }
    if (m_picture->parsed()) {
        return PictureCommand::run(m_pictureOptions);
    }
    if (m_channels->parsed()) {
        return ChannelsCommand::run(m_channelOptions);
    }
    if (m_prepare->parsed()) {
        return PrepareCommand::run(m_prepareOptions);
    }
    if (m_discover->parsed()) {
        return DiscoverCommand::run(m_deviceOptions);
    }
    return m_add->parsed() ? AddCommand::run(m_addOptions) : TargetsCommand::run(m_targetOptions);
}
