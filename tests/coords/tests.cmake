zrt_add_test(coords/texts unit zrt_coords)
