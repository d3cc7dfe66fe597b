# What cmake --install and cpack put where.
