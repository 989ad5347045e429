#pragma once

/// The signals that end the program while it may be writing a file.
///
/// Each of them removes the temporary files first; then the program ends as if nobody had handled the signal, so that
/// the shell learns of it. One that the program was started to ignore, as `nohup` does with SIGHUP, stays ignored.
class EndingSignals {
public:
    EndingSignals() = delete;

    /// To be called once, before anything is written.
    static void handle();
};
