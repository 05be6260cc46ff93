// The messages of the pop-ups in the languages that a run changes between. In each of them a name stands
// at the end.
#include <array>
#include <map>

#include "Model.h"

namespace soak {

namespace {

using Texts = std::array<const char*, 4>;  // en, de, fr, ja

const std::map<std::string, Texts> MESSAGES = {
    {"TV_SID_MIX_NEW_DEVICE_CONNECTED",
     {"New device connected: ", "Neues Gerät angeschlossen: ", "Nouvel appareil connecté\u00a0: ",
      "新しいデバイスが接続されました："}},
    {"TV_SID_WOULD_U_LIKE_BROWSE_FILES",
     {"Would you like to browse the files on this device?",
      "Möchten Sie die Dateien auf diesem Gerät durchsuchen?",
      "Voulez-vous parcourir les fichiers de cet appareil\u00a0?",
      "このデバイス内のファイルを参照しますか？"}},
    {"COM_COMMONCTRL_BROWSE", {"Browse", "Durchsuchen", "Parcourir", "参照"}},
    {"COM_SID_MIX_FILE_NAME_COLON",
     {"File name: ", "Dateiname: ", "Nom du fichier\u00a0: ", "ファイル名："}},
    {"COM_SID_FILE_DETECTED_ON_THIS_DEVICE",
     {"A file was found on this device.", "Auf diesem Gerät wurde eine Datei gefunden.",
      "Un fichier a été détecté sur cet appareil.", "このデバイスでファイルが見つかりました。"}},
    {"TV_SID_LIKE_TO_PLAY_FILE",
     {"Would you like to play it?", "Möchten Sie sie wiedergeben?", "Voulez-vous le lire\u00a0?",
      "再生しますか？"}},
    {"SID_PLAY", {"Play", "Wiedergeben", "Lire", "再生"}},
    {"COM_SID_CANCEL", {"Cancel", "Abbrechen", "Annuler", "キャンセル"}},
    {"TV_SID_DEVICE_BEEN_DISCONNECTED",
     {"The device has been disconnected.", "Das Gerät wurde getrennt.",
      "L’appareil a été déconnecté.", "デバイスの接続が解除されました。"}},
};

}  // namespace

std::string message(const std::string& language, const std::string& id, const std::string& name) {
    const std::size_t column = language == "de"   ? 1
                               : language == "fr" ? 2
                               : language == "ja" ? 3
                                                  : 0;
    return MESSAGES.at(id)[column] + name;
}

}  // namespace soak
