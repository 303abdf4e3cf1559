#pragma once

#include <cstdint>

// The most the loader reads of each file of a DDP. Every limit lies well
// above what a real disc needs, and far below what would cost memory or time
// worth noticing: a file larger than its limit is not a DDP file at all (a
// link to /dev/zero, a renamed video), and reading it whole would cost
// gigabytes before any check could say so.

// DDPID: the identifier is one 128-byte record; only that much is read.
inline constexpr std::uint64_t kDdpidReadBytes = 128;

// DDPMS: one 128-byte packet per stream. A disc with a stream per track and
// index would still need fewer than 10 000; 1024 packets is already far more
// than any authoring tool writes for an audio disc.
inline constexpr std::uint64_t kMaxMapPackets = 1024;
inline constexpr std::uint64_t kMaxDdpmsBytes = kMaxMapPackets * 128;

// PQ descriptor: one 64-byte entry per index. A disc has at most 99 tracks,
// each with index 00 and indexes 01..99, plus the lead-in and lead-out
// entries: 9 903 entries. 10 000 leaves a little room for odd writers.
inline constexpr std::uint64_t kMaxPqEntries = 10000;
inline constexpr std::uint64_t kMaxPqDescriptorBytes = kMaxPqEntries * 64;

// CD-Text: at most 8 language blocks of 256 packs of 18 bytes.
inline constexpr std::uint64_t kMaxCdTextBytes = 8 * 256 * 18;
