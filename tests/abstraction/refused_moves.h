// While one lives, the system refuses to move a file to a free name, as a full or foreign disk
// does.
#pragma once

namespace tamarin::test {

class RefusedMoves {
public:
    RefusedMoves();
    ~RefusedMoves();
    RefusedMoves(const RefusedMoves&) = delete;
    RefusedMoves& operator=(const RefusedMoves&) = delete;
};

} // namespace tamarin::test
