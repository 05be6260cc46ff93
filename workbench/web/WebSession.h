// One sitting in front of the TV with a page, or with none: the daemon is started, orders of pages and
// steps of scenarios are carried out, news is told. The wiring of the web form; each part does its own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Audience.h"
#include "BusInterface.h"
#include "BusPeers.h"
#include "Checker.h"
#include "ClockDial.h"
#include "DaemonView.h"
#include "Desk.h"
#include "LogBook.h"
#include "Loop.h"
#include "Offers.h"
#include "OrderQueue.h"
#include "Player.h"
#include "PortBoard.h"
#include "RecordFile.h"
#include "Recorder.h"
#include "RemoteControl.h"
#include "SimulatedTv.h"
#include "Stage.h"
#include "TvState.h"
#include "TvSwitches.h"
#include "WebServer.h"
#include "Wire.h"

namespace workbench {

class WebSession {
public:
    /// Begins to listen for pages, unless the arguments ask for none. Throws std::runtime_error.
    WebSession(simulated::SimulatedTv& tv,
               const Stage& stage,
               std::string busAddress,
               const Arguments& arguments);

    /// Runs the daemon until the TV is switched off. Returns the exit status of the program.
    int run();

private:
    void offerOrders();
    void offerScenarioOrders();
    void describeState();
    void listen();
    void begin();
    void open();
    void welcome();
    void plugSticks();
    void startReplay();
    void stopReplay();
    void takeOrder(unsigned page, const Json& order, std::size_t bytes);
    void carryOutNext();
    std::vector<Step> behindPlugged(std::vector<Step> steps) const;
    Player::Hooks playerHooks();
    void tellStep(const Step& step, const std::string& error);
    void endReplay(bool allWell);
    void saveRecording();
    std::string endRecording();
    void loseBus(const std::string& reason);
    static void complain(const std::string& text);
    Mark mark() const;

    simulated::SimulatedTv& tv_;
    std::string busAddress_;
    const Arguments& arguments_;

    BusInterface interface_;
    Offers offers_;
    LogBook log_;
    PortBoard ports_;
    RemoteControl remote_;
    ClockDial clock_;
    TvSwitches switches_;
    BusPeers peers_;
    DaemonView daemon_;
    TvState state_;
    Desk desk_;
    Audience audience_;
    Checker checker_;
    Player player_;
    Recorder recorder_;
    std::optional<Wire> wire_;
    std::optional<WebServer> server_;

    bool begun_ = false;
    bool hasBus_ = false;
    bool pageHasCome_ = false;
    bool isReplayed_ = false;                  // to its end, without a page
    int status_ = 0;                           // of the program
    std::optional<std::vector<Step>> wanted_;  // to be replayed at the beginning
    unsigned waitTimer_ = 0;                   // of the replay that lets time pass; 0 for none
    std::optional<RecordFile> recordFile_;
    std::uint64_t touched_ = 0;  // orders carried out
    OrderQueue orders_;
    enum class Bus { Behind, Asked, Heard };
    Bus heard_ = Bus::Behind;  // whether what was said before the next order is heard
    std::vector<Source> sources_;
};

}  // namespace workbench
