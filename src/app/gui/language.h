#pragma once
// Which language the window speaks, and the translators that make it so.
//
// Every text the window shows is written in English in the code, through
// tr(); translations/tunebox_ja.ts gives the Japanese, which carries the
// dialog's original captions exactly as they were written (half-width
// katakana included). The .qm files are built from the .ts files and
// embedded, so nothing is looked up on disk but Qt's own translations, which
// make the file pickers and message boxes speak the same language.
// scripts/update-translations.sh collects new strings into the .ts files.
//
// Japanese locales get Japanese and every other locale English, unless
// `--lang ja|en` or the settings key LANG in section UI says otherwise.

#include <QLocale>
#include <QString>
#include <QTranslator>
#include <memory>
#include <optional>
#include <vector>

namespace tunebox::gui {

enum class Language { kJapanese, kEnglish };

// "ja" or "en"; none for anything else.
std::optional<Language> parseLanguage(const QString& name);

// The option when given, else the setting when it names a language, else
// the system's locale.
Language chooseLanguage(const QString& option, const QString& setting, const QLocale& system);

// The translators of one language, installed in the running application for
// as long as this object lives. English needs none: it is the source.
class Translations {
  public:
    explicit Translations(Language language);
    ~Translations();
    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;

    // Whether the program's own translation was found (always for English).
    bool loaded() const { return loaded_; }

  private:
    void install(std::unique_ptr<QTranslator> translator);

    std::vector<std::unique_ptr<QTranslator>> installed_;
    bool loaded_ = true;
};

}  // namespace tunebox::gui
