#pragma once

/// Makes the texts that Qt brings itself (the buttons of its dialogs, for instance) French,
/// whatever the session's language. Call it once, after the application object is made. Without
/// Qt's translations on the machine, these texts stay English.
void use_french_texts();
