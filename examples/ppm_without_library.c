/* A loader for raw PPM files ("P6", 8 bits a sample) without libvorn: it speaks the protocol of
 * docs/protocol.md with POSIX calls alone. Put it into the home directory's Loaders. */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <poll.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

enum { kAreaSize = 0x20000, kSemaphores = 6, kTokens = 19, kItemHead = 8, kLinesInBlock = 16 };
enum { kInFree = 0, kInFull = 1, kOutFull = 2, kOutFree = 3 };
enum { kTerminate = 1, kAbort = 2, kLoadInfo = 0x1000, kLoadData = 0x1001 };
enum { kNotThisFormat = 2001, kDamaged = 2002 };

static const uint32_t kEnd = 0, kInterrupt = 4, kCommand = 0x01000006, kAck = 0x01000007,
                      kReadLine = 0x01000064, kReadWidth = 0x01000065, kReadHeight = 0x01000066,
                      kColorSpace = 0x01000071, kVersion = 0x01000084, kFilename = 0x02000000,
                      kData = 0x03000000, kDataFormat = 0x03000001, kErrorCode = 0x03000002;

static int semaphore[kSemaphores];
static int host = -1; /* readable when the host has ended */
static unsigned char *in, *out;
static uint32_t inSize, outSize;

static FILE* file;
static int32_t width, height;
static int32_t error;

/* Semaphores */

static int tryTake(int entry) {
    uint64_t count;
    return read(semaphore[entry], &count, sizeof count) == sizeof count;
}

static void give(int entry) {
    const uint64_t one = 1;
    if (write(semaphore[entry], &one, sizeof one) != sizeof one) exit(1);
}

/* Ends the program when the host is gone. */
static void take(int entry) {
    while (!tryTake(entry)) {
        struct pollfd waits[2] = {{semaphore[entry], POLLIN, 0}, {host, POLLIN, 0}};
        if (poll(waits, 2, -1) < 0 && errno != EINTR) exit(1);
        if (waits[1].revents && !waits[0].revents) exit(0);
    }
}

/* Messages */

static unsigned char* item(unsigned char* at, uint32_t id, const void* data, uint32_t size) {
    const uint32_t padded = (size + 3) & ~3u, length = kItemHead + padded;
    memcpy(at, &id, 4);
    memcpy(at + 4, &length, 4);
    if (size) memcpy(at + kItemHead, data, size);
    return at + length;
}

static unsigned char* number(unsigned char* at, uint32_t id, int32_t value) {
    return item(at, id, &value, sizeof value);
}

static void send(unsigned char* at) {
    item(at, kEnd, NULL, 0);
    give(kOutFull);
}

static void sendEmpty(void) {
    take(kOutFree);
    send(out);
}

/* The data of an item in the host's message, which stays until the area is given back. */
static const unsigned char* find(uint32_t wanted) {
    for (uint32_t offset = 0; offset + kItemHead <= inSize;) {
        uint32_t id, length;
        memcpy(&id, in + offset, 4);
        memcpy(&length, in + offset + 4, 4);
        if (id == wanted) return in + offset + kItemHead;
        if (id == kEnd || length < kItemHead) return NULL;
        offset += length;
    }
    return NULL;
}

/* The file */

static void closeFile(void) {
    if (file) fclose(file);
    file = NULL;
}

static int openFile(const char* name) {
    int most = 0;
    closeFile();
    file = fopen(name, "rb");
    if (!file) return 0;
    return fscanf(file, "P6 %d %d %d", &width, &height, &most) == 3 && most == 255 &&
           getc(file) != EOF && width > 0 && height > 0 && width <= 32000 && height <= 65536;
}

/* Commands */

static void loadInfo(void) {
    const unsigned char* name = find(kFilename);
    if (!name || !openFile((const char*)name)) {
        closeFile();
        error = kNotThisFormat;
        return;
    }
    int32_t format[32] = {0, width, height, 3, 1}; /* red, green and blue side by side */
    for (int c = 0; c < 3; ++c) {
        format[6 + c] = 3;
        format[14 + c] = 3 * width;
        format[22 + c] = c;
    }
    memset(format + 30, 8, 3);
    take(kOutFree);
    unsigned char* at = item(out, kDataFormat, format, sizeof format);
    send(number(at, kColorSpace, 2));
}

static int hostInterrupts(void) {
    if (!tryTake(kInFull)) return 0;
    const int interrupt = find(kInterrupt) != NULL;
    give(kInFree);
    if (interrupt) sendEmpty();
    return interrupt;
}

static void loadData(void) {
    static unsigned char pixels[kAreaSize];
    const uint32_t lineSize = 3 * (uint32_t)width;
    int32_t most = (int32_t)((outSize - 256) / lineSize);
    if (most > kLinesInBlock) most = kLinesInBlock;
    for (int32_t first = 0; first < height && !hostInterrupts(); first += most) {
        const int32_t lines = height - first < most ? height - first : most;
        const uint32_t size = lineSize * (uint32_t)lines;
        if (fread(pixels, 1, size, file) != size) {
            error = kDamaged;
            return;
        }
        take(kOutFree);
        unsigned char* at = number(out, kReadWidth, width);
        at = number(at, kReadHeight, lines);
        at = number(at, kReadLine, first);
        send(item(at, kData, pixels, size));
    }
}

static void acknowledge(int32_t count) {
    const int32_t pair[2] = {error, 0};
    take(kOutFree);
    unsigned char* at = number(out, kAck, count);
    if (error) at = item(at, kErrorCode, pair, sizeof pair);
    error = 0;
    send(number(at, kVersion, 3));
}

static void serve(void) {
    for (int32_t count = 1;; ++count) {
        acknowledge(count);
        take(kInFull);
        const unsigned char* data = find(kCommand);
        uint32_t command = 0;
        if (data) memcpy(&command, data, 4);
        if (command == kLoadInfo) loadInfo();
        give(kInFree);
        if (command == kTerminate) return;
        if (command == kLoadData && file) {
            sendEmpty();
            loadData();
        }
        if (command != kLoadInfo) closeFile();
    }
}

int main(int argc, char** argv) {
    if (argc != kTokens) return 1; /* started by hand */
    for (int i = 0; i < kSemaphores; ++i) semaphore[i] = atoi(argv[2 + 2 * i]);
    if (getenv("VORN_HOST")) host = atoi(getenv("VORN_HOST"));
    unsigned char* base =
        mmap(NULL, kAreaSize, PROT_READ | PROT_WRITE, MAP_SHARED, atoi(argv[0]), 0);
    if (base == MAP_FAILED) return 1;
    in = base + atoi(argv[14]);
    inSize = (uint32_t)atoi(argv[15]);
    out = base + atoi(argv[16]);
    outSize = (uint32_t)atoi(argv[17]);
    serve();
    return 0;
}
