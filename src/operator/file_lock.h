#pragma once

/// A lock between programs: a file of the working directory, created when it is missing and never
/// removed, or two programs could each lock a file of that name. The kernel frees the lock when its
/// program ends, however that happens.
class FileLock {
public:
    explicit FileLock(const char* file);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    /// Waits for the lock and takes it, for the life of this object. Returns false when the file
    /// cannot be written.
    bool take() const;

    /// Takes the lock without waiting. Returns false only when another program has it: where the
    /// file cannot be written, nobody is kept out.
    bool try_take() const;

private:
    int descriptor;
};
