// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/Decoder.h"

#include <QByteArray>

#include <chrono>
#include <memory>

/// The frames of a sound file, on disk or in memory, decoded as they are read. Going back to the
/// first frame is exact in every supported format. No call of the decoder reads or computes without limit,
/// whatever the file claims.
class SoundFile : public FrameSource, private DecoderInput
{
public:
    // The maximum size of the decoded file is maxBytes.
    static std::unique_ptr<SoundFile> fromPath(const QString &path, qint64 maxBytes);
    static std::unique_ptr<SoundFile> fromData(const QByteArray &data, const QString &name,
                                               qint64 maxBytes);

    ~SoundFile() override;

    Result<Loading> open(const WakeEvent &wake) override;
    SoundFormat format() const override;
    Read read(float *samples, long frames) override;
    Result<bool> rewind() override;

private:
    SoundFile(const QString &path, const QByteArray &data, const QString &name, qint64 maxBytes);

    std::optional<Failure> openBytes();
    std::optional<Failure> openPath();
    std::optional<Failure> findSound();
    using MakeDecoder = std::unique_ptr<Decoder>(DecoderInput &);
    std::optional<Failure> openDecoder(MakeDecoder *make);
    std::optional<Failure> checkFormat() const;
    std::optional<Failure> checkSize(qint64 frames) const;
    Read endOfFile() const;
    Failure failure(const QString &what) const;
    void closeAll();

    qint64 readAt(void *target, qint64 count, qint64 offset) const;
    void allowCall();
    bool mayRead(qint64 bytes);

    qint64 length() const override;
    qint64 position() const override;
    qint64 seek(qint64 offset, int whence) override;
    qint64 read(void *target, qint64 count) override;

    QString m_path; // empty if the sound is in memory
    QByteArray m_data;
    QString m_name; // for error messages
    const qint64 m_maxBytes;
    int m_descriptor = -1;
    qint64 m_begin = 0;  // behind the ID3 tags, or of the samples of a WAV file
    QByteArray m_header; // which the decoder reads before that
    qint64 m_size = 0;   // of what it may read, with the header
    qint64 m_offset = 0;
    qint64 m_allowance = 0;               // how much the decoder may still read in this call
    std::chrono::nanoseconds m_latest{0}; // of the thread's processor time: the call's end
    std::chrono::nanoseconds m_long{0};   // the same: the call takes long from then on
    const WakeEvent *m_wake = nullptr;    // while the file is opened
    bool m_interrupted = false;
    std::unique_ptr<Decoder> m_decoder;
    qint64 m_framesRead = 0;
};
