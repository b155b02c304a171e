# Everything is position-independent, relocated before it runs and read-only from then on; stacks and
# buffers are watched. The files that are read come from elsewhere.

# Not CMAKE_POSITION_INDEPENDENT_CODE: that would compile the libraries for use in shared ones, which
# keeps functions from being inlined.
add_compile_options(-fPIE -fstack-protector-strong)
# Without optimisation there is nothing to fortify, and the C library warns of that.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
add_link_options(-pie -Wl,-z,relro,-z,now)
