zrt_add_test(fields/numberbox gui zrt_fields)
