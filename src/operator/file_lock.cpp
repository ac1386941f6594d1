#include "file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

FileLock::FileLock(const char* file)
    : descriptor(open(file, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600)) {}

FileLock::~FileLock() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

bool FileLock::take() const {
    int status = -1;
    do {
        status = flock(descriptor, LOCK_EX);
    } while (status != 0 && errno == EINTR);
    return status == 0;
}

bool FileLock::try_take() const {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}
