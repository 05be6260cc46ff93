// One sitting in front of the TV: who carries out which order, when what is told, how it begins and ends.
#include "WebSession.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "DaemonRun.h"
#include "TvFacts.h"

namespace fs = std::filesystem;

namespace workbench {

namespace {

/// The journal of platform calls is nobody's reading here.
constexpr std::size_t journalLimit = 1000;

constexpr int ownClient = 1;

/// How long, in real time, the daemon may take to appear on the bus.
constexpr unsigned appearMilliseconds = 5000;

std::string emptyFolder(const Stage& stage) {
    std::string folder = stage.folder() + "/empty";
    fs::create_directories(folder);
    return folder;
}

std::string contentsOf(const std::string& file) {
    char* text = nullptr;
    GError* error = nullptr;
    g_file_get_contents(file.c_str(), &text, nullptr, &error);
    const std::unique_ptr<char, decltype(&g_free)> ownedText(text, g_free);
    if (error != nullptr) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        throw ArgumentsError(error->message);
    }
    return text;
}

}  // namespace

void WebSession::complain(const std::string& text) {
    static_cast<void>(std::fprintf(stderr, "portmeld-workbench: %s\n", text.c_str()));
}

WebSession::WebSession(simulated::SimulatedTv& tv,
                       const Stage& stage,
                       std::string busAddress,
                       const Arguments& arguments)
    : tv_(tv),
      busAddress_(std::move(busAddress)),
      arguments_(arguments),
      interface_(stage.interfaceDescription()),
      offers_(stage, busAddress_),
      log_(tv),
      ports_(tv, WORKBENCH_SAMPLES, emptyFolder(stage)),
      remote_(tv),
      clock_(tv),
      switches_(tv, [&stage](const std::string& code) { return stage.hasLanguage(code); }),
      peers_(busAddress_, interface_),
      daemon_(tv, [this](const std::string& busName) { return peers_.nameOf(busName); }),
      audience_(state_,
                log_,
                {[this] { return mark(); }, [this] { return offers_.hello(tv_.clock().now()); },
                 [this](unsigned page, const Json& order, std::size_t bytes) {
                     takeOrder(page, order, bytes);
                 },
                 [this] { welcome(); }}),
      checker_(tv, state_, log_, [this] { return hasBus_ ? &*wire_ : nullptr; }),
      player_(desk_, checker_, playerHooks()),
      recorder_(tv, state_, ports_, [this](const std::string& busName) {
          return peers_.numberOf(busName);
      }) {
    tv_.journal().setLimit(journalLimit);
    if (!arguments.replay.empty()) {
        try {
            wanted_ = readScenario(contentsOf(arguments.replay),
                                   fs::path(arguments.replay).parent_path(), interface_);
        } catch (const ScenarioError& error) {
            throw ArgumentsError(arguments.replay + ": " + error.what());
        }
    }
    if (!arguments.record.empty()) {
        recordFile_.emplace(arguments.record);
    }
    desk_.setWatcher({[this](const Order& order) { recorder_.before(order); },
                      [this](const Order& order, const Outcome& outcome) {
                          recorder_.after(order, outcome.error.empty());
                          saveRecording();
                      }});
    offerOrders();
    offerScenarioOrders();
    describeState();
    if (arguments.isHeadless) {
        tv_.clock().setRate(0);
    } else {
        server_.emplace(
            arguments.port, PageFiles(arguments.pageFolder),
            WebServer::Hooks{
                [this](SoupWebsocketConnection* connection) { audience_.join(connection); },
                [this](const std::string& path) { return remote_.isPicture(path); }});
    }
    listen();
}

/// The sources of everything that happens.
void WebSession::listen() {
    const auto leave = [] {
        leaveDaemonLoop();
        return true;
    };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sources_.push_back(whenSignalled(signal, leave));
    }
    sources_.push_back(whenever(
        G_PRIORITY_DEFAULT, [this] { return begun_ && !orders_.isEmpty() && heard_ != Bus::Asked; },
        [this] { carryOutNext(); }));
    sources_.push_back(whenever(
        G_PRIORITY_DEFAULT,
        [this] {
            remote_.look();
            ports_.look(DaemonView::currentNode());
            recorder_.look();
            return audience_.hasNews();
        },
        [this] { audience_.tellNews(); }));
    // A step's whole effect has come when nothing else is left to do.
    sources_.push_back(whenever(
        G_PRIORITY_LOW, [this] { return player_.isDue(); }, [this] { player_.proceed(); }));
}

void WebSession::offerOrders() {
    desk_.offer("plugFolder", [this](const Json& with) { return ports_.plugFolder(with); });
    desk_.offer("plugSample", [this](const Json& with) { return ports_.plugSample(with); });
    desk_.offer("plugCamera", [this](const Json& with) { return ports_.plugCamera(with); });
    desk_.offer("hub", [this](const Json& with) { return ports_.hub(with); });
    desk_.offer("mount", [this](const Json& with) { return ports_.mount(with); });
    desk_.offer("pull", [this](const Json& with) { return ports_.pull(with); });
    desk_.offer("press", [this](const Json& with) { return remote_.press(with); });
    desk_.offer("hide", [this](const Json&) { return remote_.hide(); });
    desk_.offer("key", [this](const Json& with) { return remote_.key(with); });
    desk_.offer("standby", [this](const Json&) { return remote_.standby(); });
    desk_.offer("powerOff", [this](const Json&) { return remote_.powerOff(); });
    desk_.offer("wake", [this](const Json&) { return remote_.wake(); });
    desk_.offer("clock", [this](const Json& with) {
        // Without a page nobody watches the time pass.
        return arguments_.isHeadless ? Json() : clock_.clock(with);
    });
    desk_.offer("step", [this](const Json&) { return clock_.step(); });
    desk_.offer("skip", [this](const Json& with) { return clock_.skip(with); });
    desk_.offer("setting", [this](const Json& with) { return switches_.setting(with); });
    desk_.offer("context", [this](const Json& with) { return switches_.context(with); });
    desk_.offer("companion", [this](const Json& with) { return switches_.companion(with); });
    desk_.offer("fault", [this](const Json& with) { return switches_.fault(with); });
    desk_.offerLater(
        "call", [this](const Json& with, Answer reply) { peers_.call(with, std::move(reply)); });
    desk_.offer("gdbus", [this](const Json& with) {
        const Json given = with["arguments"];
        return Json::object(
            {{"line", interface_.commandLine(busAddress_, with["member"].text(),
                                             given.isNull() ? Json::array() : given)}});
    });
    desk_.offerLater("folders", [this](const Json& with, Answer reply) {
        offers_.folders(with, std::move(reply));
    });
    desk_.offer("clearLog", [this](const Json&) {
        log_.clear();
        audience_.clearLog();
        return Json();
    });
    desk_.offer("quit", [](const Json&) {
        leaveDaemonLoop();
        return Json();
    });
}

void WebSession::describeState() {
    // First, as times of all others are reckoned from it.
    state_.add("clock", [this](bool times) { return clock_.state(times); });
    state_.add("popup", [this](bool times) { return remote_.popup(times); });
    state_.add("launched", [this](bool) { return remote_.launched(); });
    state_.add("devices", [](bool) { return DaemonView::devices(); });
    state_.add("daemon", [this](bool) { return daemon_.daemon(); });
    state_.add("ports", [this](bool) { return ports_.state(remote_.front()); });
    state_.add("settings", [this](bool) { return switches_.settings(); });
    state_.add("context", [this](bool) { return switches_.contextState(); });
    state_.add("power", [this](bool) { return Json(remote_.power()); });
    state_.add("recording", [this](bool) {
        return recorder_.isRecording() ? Json::object({{"since", recorder_.since()},
                                                       {"steps", recorder_.steps()},
                                                       {"title", recorder_.title()}})
                                       : Json();
    });
    state_.add("replaying", [this](bool) {
        return player_.isPlaying()
                   ? Json::object({{"line", player_.line()}, {"lines", player_.lastLine()}})
                   : Json();
    });
}

Mark WebSession::mark() const {
    return {tv_.journal().mark(), touched_, tv_.scanner().running(),
            tv_.journal().breaches().size()};
}

int WebSession::run() {
    const int status = runDaemon([this] {
        sources_.push_back(everyMilliseconds(0, [this] {
            begin();
            return false;
        }));
    });
    if (recorder_.isRecording()) {
        static_cast<void>(endRecording());
    }
    tv_.checkLeaks();
    for (const std::string& breach : tv_.journal().breaches()) {
        complain("portmeld broke a rule of the platform: " + breach);
    }
    if (arguments_.isHeadless && !isReplayed_) {
        complain("the scenario was not replayed to its end");
        status_ = 1;
    }
    return status != 0 || !tv_.journal().breaches().empty() ? 1 : status_;
}

void WebSession::begin() {
    static_cast<void>(skipStartUp(tv_));
    const auto withoutBus = [this](const std::string& reason) {
        if (!begun_) {
            complain("no bus: " + reason);
            open();
        }
    };
    wire_.emplace(busAddress_,
                  Wire::Hooks{[this] { return tv_.clock().now(); },
                              [this](const std::string& name) {
                                  const std::optional<int> own = peers_.numberOf(name);
                                  return own ? own : clientIdOf(name);
                              },
                              [this] {
                                  hasBus_ = true;
                                  recorder_.setWire(&*wire_);
                                  open();
                              },
                              withoutBus, [this](const std::string& why) { loseBus(why); }});
    audience_.setWire(&*wire_);
    sources_.push_back(everyMilliseconds(appearMilliseconds, [withoutBus] {
        withoutBus("the daemon has not appeared on it");
        return false;
    }));
}

/// Everything is set up: the daemon, and the bus with it.
void WebSession::open() {
    if (begun_) {
        return;
    }
    const Json connect = Json::object({{"client", ownClient},
                                       {"member", "Connect"},
                                       {"arguments", Json::array({"workbench", ownClient})}});
    desk_.carryOut({"call", connect}, [this](const Outcome&) {
        begun_ = true;
        if (recordFile_) {
            recorder_.begin("");
            saveRecording();
        }
        if (server_) {
            static_cast<void>(std::printf("Open %s\n", server_->address().c_str()));
            static_cast<void>(std::fflush(stdout));
            if (wanted_) {
                complain("the scenario is replayed as soon as the page is open");
            }
        }
        startReplay();
    });
}

/// The first page has come.
void WebSession::welcome() {
    pageHasCome_ = true;
    plugSticks();
    startReplay();
}

/// Sticks come when somebody is there to see them.
void WebSession::plugSticks() {
    for (const StickWish& stick : arguments_.sticks) {
        const Json with = Json::object({{"path", stick.folder}, {"title", stick.product}});
        static_cast<void>(orders_.add({0, {}, {"plugFolder", with}, 0}));
    }
    if (arguments_.sticks.empty() && arguments_.replay.empty() && !arguments_.isBare) {
        const Json with = Json::object({{"id", "one-photo"}});
        static_cast<void>(orders_.add({0, {}, {"plugSample", with}, 0}));
    }
}

void WebSession::takeOrder(unsigned page, const Json& order, std::size_t bytes) {
    if (!orders_.add({page, order["id"], {order["do"].text(), order["with"]}, bytes})) {
        audience_.tell(page, Json::object({{"type", "failed"},
                                           {"id", order["id"]},
                                           {"error", "too many orders wait for their turn"}}));
    }
}

void WebSession::carryOutNext() {
    // A recording tells what each order has brought about, and nothing of before: the bus may be later
    // than the next order.
    const bool isTold = recorder_.isRecording() || orders_.front().order.name == "record";
    if (isTold && hasBus_ && heard_ == Bus::Behind) {
        heard_ = Bus::Asked;
        wire_->sync([this] { heard_ = Bus::Heard; });
        return;
    }
    heard_ = Bus::Behind;
    const OrderQueue::Waiting next = orders_.take();
    desk_.carryOut(next.order, [this, next](const Outcome& outcome) {
        ++touched_;
        Json message =
            Json::object({{"type", outcome.error.empty() ? "done" : "failed"}, {"id", next.id}});
        if (outcome.error.empty()) {
            message.set("result", outcome.result);
        } else {
            message.set("error", outcome.error);
        }
        audience_.tell(next.page, message);
    });
}

}  // namespace workbench
