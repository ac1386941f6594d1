#pragma once

/// A lock between programs, in a file of the working directory that is created for it and stays:
/// one that were removed could be locked by two, each in a file of its own. The kernel frees it
/// when its program ends, however that happens.
class FileLock {
public:
    explicit FileLock(const char* file);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    /// Waits for its turn. Returns whether it has it, until the end of this object; false when the
    /// file cannot be written.
    bool take() const;

    /// Takes the lock unless another has it, which returns false. Returns true also when the file
    /// cannot be written, for then nobody is kept out.
    bool try_take() const;

private:
    int descriptor;
};
