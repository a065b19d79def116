# Filled by the install rules of library, headers, command, CMake package and pkg-config file.
