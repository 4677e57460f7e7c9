-- The demonstration installation: a bank hall with two halls of counters, the second one behind a hub.
-- Texts are in Unicode here and go into the store in VNI. One statement a line.

INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (1, 1, 1000, 0, 1, 'Gửi tiền', 'Mời quý khách đến quầy $1', 'Deposits', 1)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (2, 2, 2000, 0, 1, 'Rút tiền', 'Mời quý khách đến quầy $1', 'Withdrawals', 2)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (3, 3, 3000, 0, 1, 'Chuyển tiền', 'Mời quý khách đến quầy $1', 'Transfers', 3)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (4, 4, 4000, 3, 1, 'Ngoại tệ', 'Quầy $1', 'Shares the series of service 3', 4)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (5, 5, 5000, 0, 1, 'Tín dụng', 'Quầy $1', 'Loans', 5)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (6, 6, 6000, 0, 1, 'Thẻ và ngân hàng điện tử', 'Quầy $1', 'Cards', 6)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (7, 7, 7000, 0, 1, 'Khách hàng ưu tiên', 'Quầy $1', 'Priority customers', 7)
INSERT INTO [Queue] (q_Id, q_Number, q_Series, q_route, q_On, q_Name, q_Description, q_Notes, q_Button) VALUES (8, 8, 8000, 0, 0, 'Kiều hối', 'Quầy $1', 'Not in use', 8)

INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (1, 1, 1, 'Quầy 1', 1, 0, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (2, 2, 2, 'Quầy 2', 1, 0, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (3, 3, 3, 'Quầy 3', 1, 0, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (4, 4, 4, 'Quầy 4', 1, 0, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (5, 5, 5, 'Quầy 5', 1, 0, 20)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (6, 6, 6, 'Quầy 6', 1, 0, 20)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (7, 7, 7, 'Quầy 7', 1, 0, 20)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (8, 8, 8, 'Quầy 8', 0, 0, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (10, 11, 32, 'Máy in sảnh chính', 1, 1, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (11, 12, 33, 'Máy in sảnh hai', 1, 1, 20)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (15, 21, 40, 'Bảng chính', 1, 2, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (16, 22, 41, 'Bảng sảnh hai', 1, 2, 0)
INSERT INTO [Display] (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (20, 31, 64, 'HUB sảnh hai', 1, 3, 0)

INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (1, 1), (1, 2), (1, 5), (2, 1), (2, 2), (2, 3), (3, 3), (3, 4), (3, 6), (4, 4), (5, 5), (5, 6), (6, 6), (6, 7), (7, 1), (7, 7)

INSERT INTO [ScanPlan] (d_Id, [Order]) VALUES (1, 1), (2, 2), (3, 3), (4, 4), (5, 5), (6, 6), (7, 7)

INSERT INTO [Info-Direction] (inf_Id, d_Id, Dir_Id) VALUES (15, 1, 1), (15, 2, 1), (15, 3, 2), (15, 4, 2), (15, 5, 3), (15, 6, 3), (15, 7, 3), (16, 5, 1), (16, 6, 1), (16, 7, 2)

INSERT INTO [rData] (TicketNo, ServiceId, DisplayId, DateTime, Flags, Announced, TicketFlag) VALUES (1001, 1, 0, '2026-11-20 08:00:05', 0, 1, 0), (1002, 1, 0, '2026-11-20 08:01:10', 0, 0, 0), (2001, 2, 0, '2026-11-20 08:04:30', 0, 0, 0), (3001, 4, 0, '2026-11-20 08:05:00', 0, 0, 1)
