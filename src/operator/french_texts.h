#pragma once

/// Makes Qt's own texts, such as those of dialog buttons, French whatever the session's language.
/// Call it once, after the application object is created. Where Qt's translations are not
/// installed, these texts stay English.
void use_french_texts();
