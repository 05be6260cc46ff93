// What the platform of the test program answers when it is asked which log lines are taken.
#pragma once

/// As long as one lives, the platform says that it drops info lines. The simulated TV takes them all the
/// same, so that tests see what the daemon still logs.
class InfoUnseen {
public:
    InfoUnseen();
    ~InfoUnseen();
    InfoUnseen(const InfoUnseen&) = delete;
    InfoUnseen& operator=(const InfoUnseen&) = delete;
};
