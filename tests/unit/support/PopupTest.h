// The fixture of everything that is about pop-ups: plugging so that one appears, replugging without a
// removal, scan results, and what was shown.
#pragma once

#include "Observations.h"
#include "TvTest.h"

class PopupTest : public ManagerTest {
protected:
    /// Every pop-up that was shown so far, each as its item type and title.
    Texts shown();
    /// The pop-up that was shown last.
    const simulated::Popup& last() { return tv.screen().history().at(shownCount() - 1); }
    std::size_t shownCount() { return tv.screen().history().size(); }

    simulated::DeviceId plugProduct(const std::string& product, const std::string& serial = "0001");
    simulated::DeviceId plugCamera(const std::string& product = "Camera",
                                   const std::string& serial = "camera");
    /// Announce a stick again, without its having been removed.
    void replug(simulated::DeviceId stick);
    /// A scan result for the stick that was plugged last.
    void reportScan(const std::string& json);
    void press(int button);
    void hide();
    void timeOut();
    void companionRuns(bool running = true);

    /// A result for a video, named as given.
    static std::string videoJson(const std::string& name = "clip.mkv");
    /// A text as a JSON string.
    static std::string quotedJson(const std::string& text);
};
