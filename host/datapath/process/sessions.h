// SPDX-License-Identifier: Apache-2.0
// Clients that exchange frames with the data path on the file "frames" of the state directory.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "datapath/process/datapath.h"
#include "wire/file.h"

namespace qvs::datapath {

class Session;

class Sessions : private wire::Noncopyable {
  public:
    Sessions(Loop &loop, DataPath &dataPath, Namespaces &namespaces);
    ~Sessions();

    // Begins to listen. Throws AttachmentError.
    void listen(const std::string &directory);

  private:
    friend class Session;

    void accept();
    void refuseOne();
    void end(int session);

    Loop &loop_;
    DataPath &dataPath_;
    Namespaces &namespaces_;
    wire::File listener_;
    wire::File reserve_;  // given up to refuse a client when there are no more descriptors
    std::map<int, std::unique_ptr<Session>> sessions_;
};

}  // namespace qvs::datapath
