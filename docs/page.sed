# What Doxygen reads instead of a page of the guide: links to other pages by their label, which is
# page_ and the name of the file. It loses a link by path where the path of the clone holds a space.
s!\]\(([a-z.]+/)*([a-z_]+)\.md\)!](@ref page_\2)!g
