zrt_add_test(fields/numberbox gui zrt_fields)
zrt_add_test(fields/tableview gui zrt_fields)
