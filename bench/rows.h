// The groups of rows of the connection's table.
#pragma once

namespace vorn_bench {

void handOffRows();
void startRows();
void pictureRows();

}  // namespace vorn_bench
