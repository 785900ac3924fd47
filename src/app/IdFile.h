#pragma once

#include "core/RunSettings.h"

// Reads IDFILE.DAT of the given folder into account.idItems (items 9, 10,
// 15-18, counting from 0), each as it is read. A missing file raises the
// file-not-found error.
void loadIdFile(const QString &folder, AccountSettings &account);
