#pragma once

#include <QString>

#include <string>

// DDPs made on case-insensitive file systems name their files in whatever
// case the mastering tool liked ("IMAGE.DAT" in the map, "image.dat" on disc).
// The exact name is looked for first, then a case-insensitive match among the
// folder's entries. Returns the path to use: the exact path when nothing
// matches (opening it then fails as it should). Unicode folder paths are fine.
// A name from the map may keep its zero padding: it is cut at the first zero.
//
// A name must not lead out of the folder: an empty name, an absolute one, one
// with a ".." in it, or one that is (or passes through) a link to a place
// outside the folder gives an empty path, which every caller treats as a
// missing file. A client's DDP could otherwise make an export copy
// /etc/shadow into a WAV.
QString resolveDdpFile(const QString& folder, const QString& name);

// A file name taken from the map stream as the file system sees it: the
// bytes up to the first zero byte, decoded as a local file name.
QString ddpFileNameFromBytes(const std::string& name);
