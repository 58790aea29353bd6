#pragma once
#include <QByteArray>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

// Reads a target's parameters off the front of the fuzzer's bytes; the rest is
// the input proper. Running short gives zeros, so every input is usable.
class FuzzInput {
public:
    FuzzInput(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    quint8 byte() { return at_ < size_ ? data_[at_++] : 0; }
    quint16 word() { return static_cast<quint16>(byte() << 8 | byte()); }
    quint32 dword() { return quint32(word()) << 16 | word(); }
    // Everything not yet taken, as a deep copy: the sanitizers see reads past its end.
    QByteArray rest() const
    {
        return at_ < size_ ? QByteArray(reinterpret_cast<const char *>(data_ + at_), static_cast<qsizetype>(size_ - at_))
                           : QByteArray();
    }

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

// A broken promise of a decoder: abort, so that the fuzzer keeps the input.
#define FUZZ_CHECK(condition) \
    do { \
        if (!(condition)) \
            qFatal("fuzz check failed: %s", #condition); \
    } while (0)
