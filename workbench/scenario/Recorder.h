// Writes down what is done as a scenario, with what came of it as expectations: replaying it later asks for
// the same again.
#pragma once

#include <cstdint>
#include <string>

#include "Circumstances.h"
#include "Desk.h"
#include "PortBoard.h"
#include "SimulatedTv.h"
#include "TvState.h"
#include "Wire.h"

namespace workbench {

class Recorder {
public:
    /// `peerOf` tells the workbench's own clients from others.
    Recorder(simulated::SimulatedTv& tv,
             const TvState& state,
             const PortBoard& ports,
             const Circumstances::PeerOf& peerOf);

    /// The bus messages, once there are any.
    void setWire(const Wire* wire);

    /// Begin, with the steps that bring a fresh TV to where this one is.
    void begin(const std::string& title);
    /// The scenario so far, without what may still be added to the news of this moment.
    const std::string& soFar() const { return text_; }
    /// End; the scenario.
    std::string end();
    bool isRecording() const { return recording_; }
    std::int64_t since() const { return since_; }
    const std::string& title() const { return title_; }
    int steps() const { return steps_; }

    /// An order is about to be carried out, and was, or could not be.
    void before(const Order& order);
    void after(const Order& order, bool done);

    /// To be called in every turn of the loop: notes when something has come up.
    void look();

private:
    struct Seen {
        std::size_t popups = 0;
        bool popupIsUp = false;
        std::size_t launches = 0;
        std::uint64_t messages = 0;
    };
    Seen now() const;
    std::string newsUntil(const Seen& seen) const;
    void writeTime(std::int64_t time);
    void writeNews();
    void write(const std::string& line);
    Order translated(const Order& order) const;

    simulated::SimulatedTv& tv_;
    const PortBoard& ports_;
    Circumstances::PeerOf peerOf_;
    Circumstances circumstances_;
    const Wire* wire_ = nullptr;
    bool recording_ = false;
    std::string title_;
    std::string text_;
    std::int64_t since_ = 0;
    std::int64_t written_ = 0;  // time that the text has reached
    bool inOrder_ = false;      // what comes up belongs behind its line
    int steps_ = 0;
    Seen seen_;                  // that is written
    Seen looked_;                // that is noticed
    std::int64_t newsTime_ = 0;  // of what is noticed and not written
    std::string news_;           // the lines for it; "" for none
    std::vector<int> numbers_;   // of the ports in the recording, by their real numbers
    int nextNumber_ = 1;
};

}  // namespace workbench
