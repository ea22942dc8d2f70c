// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <QByteArray>

#include <sndfile.h>

#include <memory>

/// The frames of a sound file, on disk or in memory, decoded as they are read. Going back to the
/// first frame is exact in every supported format.
class SoundFile : public FrameSource
{
public:
    // The maximum size of the decoded file is maxBytes.
    static std::unique_ptr<SoundFile> fromPath(const QString &path, qint64 maxBytes);
    static std::unique_ptr<SoundFile> fromData(const QByteArray &data, const QString &name,
                                               qint64 maxBytes);

    ~SoundFile() override;

    std::optional<Failure> open() override;
    SoundFormat format() const override;
    Read read(float *samples, long frames) override;
    Result<bool> rewind() override;

private:
    SoundFile(const QString &path, const QByteArray &data, const QString &name, qint64 maxBytes);

    std::optional<Failure> openPath();
    std::optional<Failure> openData();
    std::optional<Failure> accept(SNDFILE *file);
    std::optional<Failure> checkWhole(qint64 size) const;
    std::optional<Failure> checkSize(sf_count_t frames) const;
    Read endOfFile() const;
    Failure failure(const QString &what) const;
    void closeAll();

    static sf_count_t dataLength(void *self);
    static sf_count_t dataSeek(sf_count_t offset, int whence, void *self);
    static sf_count_t dataRead(void *target, sf_count_t count, void *self);
    static sf_count_t dataTell(void *self);

    QString m_path; // empty if the sound is in memory
    QByteArray m_data;
    QString m_name; // for error messages
    const qint64 m_maxBytes;
    sf_count_t m_offset = 0; // in m_data
    int m_descriptor = -1;
    SNDFILE *m_file = nullptr;
    SF_INFO m_info{};
    sf_count_t m_framesRead = 0;
};
