#pragma once

/// Outcome of creating a network or an account: the exit status of `quorvale-new`, and of the
/// command `compte` of a project's manage.py.
enum CreationStatus {
    created_whole = 0,
    not_created = 1,
    password_refused = 3,
    pseudonym_refused = 4,
};
