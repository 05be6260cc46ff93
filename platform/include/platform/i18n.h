/*
 * Texts: binding the message catalogue to the menu language, and filling the placeholders of a
 * message. The look-up itself is the C library's dgettext().
 */
#ifndef PLATFORM_I18N_H
#define PLATFORM_I18N_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Bind a text domain to the TV's present menu language ("db/menu_widget/language"): from the return
 * on, dgettext() for this domain answers in that language, as UTF-8. Called once at start-up and
 * again after each change of the language. LC_NUMERIC stays "C" in every language, so that numbers
 * that go to other programs are written alike everywhere.
 *
 * @param domain  text domain, "portmeld"
 * @param dir     folder of the catalogues: DIR/LANGUAGE/LC_MESSAGES/DOMAIN.mo
 * @return 0 on success; ignored by the daemon, which then shows the message ids
 */
int appcore_set_i18n(const char* domain, const char* dir);

#ifdef __cplusplus
}

/** Text composition of the platform's base library. */
class CStringUtil {
public:
    /**
     * Put arguments into the placeholders "{1}" to "{4}" of a message. The placeholders may stand in
     * any order and more than once; one whose argument is null is replaced by nothing. Braces that
     * form no placeholder stand for themselves. Nothing in the format or in an argument is a printf
     * conversion, and placeholders in an argument are not expanded.
     *
     * @param out        receives the text, always terminated; cut at a UTF-8 character boundary
     * @param maxLength  the longest text that may be written, in bytes without the terminator: `out`
     *                   holds at least maxLength + 1 bytes (the daemon: 255 in 256)
     * @param format     the message; null counts as ""
     * @param a1,a2,a3,a4  arguments, null when unused
     * @return true when the whole text fitted
     */
    static bool CombinateStrings(char* out,
                                 int maxLength,
                                 const char* format,
                                 const char* a1,
                                 const char* a2,
                                 const char* a3,
                                 const char* a4);
};
#endif

#endif
